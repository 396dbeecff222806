// The one function of the module that holds the decoders.

#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/media/MediaModule.h"

extern "C" __attribute__((visibility("default"))) const quillet::MediaOpeners* quilletMediaEntry()
{
    static quillet::FfmpegAudioFileOpener audioFiles;
    static quillet::FfmpegAmplitudeReaderOpener amplitudeReaders;
    static const quillet::MediaOpeners openers{ &audioFiles, &amplitudeReaders };
    return &openers;
}
