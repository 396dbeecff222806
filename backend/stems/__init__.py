"""What separate.py is made of.

supervisor  starts the worker, publishes what it made, says what went wrong; knows no numbers and no network
output      the folder of the stems: its lock, what is unfinished, all or nothing
worker      the steps of a separation, in a process that may die
song        the song's sound: its exact length, its decoding, other sample rates
weights     the model's file: fetched once, checked every time
level       what a song is normalised by
model       the network and its overlapping segments
wav         WAV files whose sound is written by others
report      words and percents for the program, and failures in one sentence
processes   children that do not outlive who started them
"""

# The stems in the program's order; "other" is what the five others leave of the song.
KEYS = ("vocals", "drums", "bass", "guitar", "piano", "other")
