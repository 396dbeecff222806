#include "platform/media/EntryRecipe.h"

namespace quillet {
namespace {

bool isPcm(AVCodecID codec) { return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT; }

bool isAdpcm(AVCodecID codec) { return codec >= AV_CODEC_ID_ADPCM_IMA_QT && codec < AV_CODEC_ID_AMR_NB; }

}  // namespace

EntryRecipe entryRecipe(AVCodecID codec, int sampleRate, std::int64_t blockFrames)
{
    if (isPcm(codec))
        return { 0, 1 };
    if (isAdpcm(codec))
        return { EntryRecipe::everythingBefore, 1 };
    switch (codec) {
    // Every packet stands for itself.
    case AV_CODEC_ID_FLAC:
    case AV_CODEC_ID_ALAC:
    case AV_CODEC_ID_WAVPACK:
    case AV_CODEC_ID_TTA:
        return { 0, 1 };
    // The bit reservoir reaches back up to 511 bytes, several frames at low bit rates; then two overlapping transforms.
    case AV_CODEC_ID_MP1:
    case AV_CODEC_ID_MP2:
    case AV_CODEC_ID_MP3:
        // The short frames of low sample rates come at bit rates that leave a few bytes in each.
        return { blockFrames == 576 ? 64 * 576 : 10 * 1152, 1 };
    case AV_CODEC_ID_AAC:
        // Longer blocks mean spectral band replication, whose envelopes and filters remember more.
        return blockFrames == 1024 ? EntryRecipe{ 2048, 1 } : EntryRecipe{ sampleRate, 1 };
    // Single time stamps are off by half a block where the block size changes. Encoders' smallest block of 256 makes a step
    // of 64.
    case AV_CODEC_ID_VORBIS:
        return { 8192, 12, 64 };
    case AV_CODEC_ID_OPUS:
        return { sampleRate, 1 };
    default:
        return { 2L * sampleRate, 4 };
    }
}

const char* preferredDecoder(AVCodecID codec)
{
    switch (codec) {
    case AV_CODEC_ID_MP1:
        return "mp1float";
    case AV_CODEC_ID_MP2:
        return "mp2float";
    case AV_CODEC_ID_MP3:
        return "mp3float";
    default:
        return nullptr;
    }
}

}  // namespace quillet
