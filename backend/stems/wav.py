"""32-bit float stereo WAV files. A file is made with room for its header, its sound is written after that by whoever has it, and the
header says how much that is at the end; RF64 beyond 4 GiB."""

import os
import struct

HEADER_BYTES = 94
FRAME_BYTES = 8
FLOAT_FORMAT = 3
UNKNOWN_SIZE = 0xFFFFFFFF
PROBE_BYTES = 1 << 20


def header(sample_rate, frames):
    data = frames * FRAME_BYTES
    file = data + HEADER_BYTES - 8
    is_large = file >= UNKNOWN_SIZE

    def size32(size):
        return UNKNOWN_SIZE if is_large else size

    # A chunk of junk keeps the place of the 64-bit sizes.
    sizes = (file, data, frames) if is_large else (0, 0, 0)
    return (struct.pack("<4sI4s", b"RF64" if is_large else b"RIFF", size32(file), b"WAVE")
            + struct.pack("<4sIQQQI", b"ds64" if is_large else b"JUNK", 28, *sizes, 0)
            + struct.pack("<4sIHHIIHHH", b"fmt ", 18, FLOAT_FORMAT, 2, sample_rate, sample_rate * FRAME_BYTES, FRAME_BYTES, 32, 0)
            + struct.pack("<4sII", b"fact", 4, size32(frames))
            + struct.pack("<4sI", b"data", size32(data)))


def create(path):
    """A descriptor that stands where the sound begins. A child that writes to it moves it on."""
    descriptor = os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, 0o666)
    os.lseek(descriptor, HEADER_BYTES, os.SEEK_SET)
    return descriptor


def frames_in(descriptor):
    return max(0, os.fstat(descriptor).st_size - HEADER_BYTES) // FRAME_BYTES


def finish(descriptor, sample_rate, frames):
    """Makes the sound exactly that long, with silence where it is shorter, and has the header say so."""
    os.ftruncate(descriptor, HEADER_BYTES + frames * FRAME_BYTES)
    write(descriptor, header(sample_rate, frames), 0)


def check_room(descriptor):
    """Raises what stands in the way of more sound, where a child could not write."""
    write(descriptor, bytes(PROBE_BYTES), os.fstat(descriptor).st_size)


def write(descriptor, data, place):
    """All of it, at that byte."""
    data = memoryview(data).cast("B")
    while data:
        written = os.pwrite(descriptor, data, place)
        data, place = data[written:], place + written
