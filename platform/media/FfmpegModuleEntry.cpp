// The one function of the module that holds the decoders and encoders.

#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/media/FfmpegAudioEncoder.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/media/MediaModule.h"

extern "C" __attribute__((visibility("default"))) const quillet::MediaOpeners* quilletMediaEntry()
{
    static quillet::FfmpegAudioFileOpener audioFiles;
    static quillet::FfmpegAmplitudeReaderOpener amplitudeReaders;
    static quillet::FfmpegAudioEncoderMaker encoders;
    static const quillet::MediaOpeners openers{ &audioFiles, &amplitudeReaders, &encoders };
    return &openers;
}
