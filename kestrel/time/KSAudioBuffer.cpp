#include <kestrel/time/KSAudioBuffer.h>

KSAudioBuffer::KSAudioBuffer(unsigned long long frameCount, unsigned int channelCount, double sampleRate,
                             unsigned int sampleSize, bool isFloat)
    : m_frameCount(frameCount),
      m_channelCount(channelCount),
      m_sampleSize(sampleSize),
      m_sampleRate(sampleRate),
      m_isFloat(isFloat),
      m_size(sampleSize * (static_cast<std::uint32_t>(frameCount) * channelCount)),
      m_samples(new std::uint8_t[getAllocatedSize()]) {}

KSAudioBuffer::~KSAudioBuffer() = default;
