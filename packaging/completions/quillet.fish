# Completions of the command quillet for fish.

set -l commands play render waveform info separate
set -l playback '__fish_seen_subcommand_from play render'
set -l first "not __fish_seen_subcommand_from $commands"

complete -c quillet -s h -l help -d 'Print the help and leave'
complete -c quillet -n $first -l version -d 'Print the version and leave'
complete -c quillet -n $first -a play -d 'Play an audio file, or a part of it'
complete -c quillet -n $first -a render -d 'Write what would be played to a file'
complete -c quillet -n $first -a waveform -d 'Print or draw the waveform of an audio file'
complete -c quillet -n $first -a info -d 'Print how long an audio file is and what it is made of'
complete -c quillet -n $first -a separate -d 'Make the six stems of songs'

complete -c quillet -n $playback -l from -x -d 'Start of the region, in seconds'
complete -c quillet -n $playback -l to -x -d 'End of the region, in seconds'
complete -c quillet -n $playback -l speed -x -d 'Speed in percent, 5 to 300; the pitch stays'
complete -c quillet -n $playback -l pitch -x -d 'Transposition in cents, -1200 to 1200; the speed stays'
complete -c quillet -n $playback -l keep-formants -d 'Let transposed voices keep their character'
complete -c quillet -n $playback -l channels -x -a 'stereo left right mono sides' -d 'Which channels are heard'
complete -c quillet -n $playback -l eq -x -d 'Gains in dB at 60, 250, 1000, 4000 and 12000 Hz'
complete -c quillet -n $playback -l stems -x -a 'vocals= drums= bass= guitar= piano= other=' -d 'Play the stems at these volumes'
complete -c quillet -n $playback -l passes -x -d 'How often the region is played'
complete -c quillet -n $playback -l delay -x -d 'Pause between two passes, in seconds'
complete -c quillet -n $playback -l hold -x -d 'Hold the instant at this time, in seconds'
complete -c quillet -n '__fish_seen_subcommand_from render' -s o -l output -r -d 'The WAV file to write'
complete -c quillet -n '__fish_seen_subcommand_from waveform' -l png -r -d 'Draw it into this PNG file'
complete -c quillet -n '__fish_seen_subcommand_from waveform info' -l json -d 'Print it as JSON'
complete -c quillet -n '__fish_seen_subcommand_from separate' -s o -l output -x -a '(__fish_complete_directories)' \
  -d 'A folder that gets a copy of the stems'
