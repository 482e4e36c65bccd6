// kestrel/time/KSAudioBuffer.h - a block of audio samples.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// A block of sample memory, sized from the format of its audio.
///
/// Units      sampleSize is in bytes, sampleRate in hertz. A frame holds one sample of each channel.
/// Sizes      getSize() is sampleSize * (frameCount * channelCount) in unsigned 32-bit arithmetic, with
///            the low 32 bits of frameCount: above 4 GiB it wraps. The memory has getSize() bytes, and
///            four times as many when the samples are floats, even when sampleSize counts four bytes
///            already. Stay within getAllocatedSize().
/// Ownership  owns the samples, which start out unspecified. Not copied.
/// Threads    one at a time.
/// Errors     std::bad_alloc from the constructor.
/// Example
///     KSAudioBuffer second(48000, 2, 48000.0, 2, false);
///     std::memset(second.getSamples(), 0, second.getAllocatedSize());
class KESTREL_API KSAudioBuffer {
public:
    KSAudioBuffer(unsigned long long frameCount, unsigned int channelCount, double sampleRate,
                  unsigned int sampleSize, bool isFloat);
    virtual ~KSAudioBuffer();
    KSAudioBuffer(const KSAudioBuffer&) = delete;
    KSAudioBuffer& operator=(const KSAudioBuffer&) = delete;

    std::uint64_t getFrameCount() const noexcept { return m_frameCount; }
    std::uint32_t getChannelCount() const noexcept { return m_channelCount; }
    std::uint32_t getSampleSize() const noexcept { return m_sampleSize; }  ///< bytes
    double getSampleRate() const noexcept { return m_sampleRate; }         ///< hertz
    bool isFloat() const noexcept { return m_isFloat; }
    std::uint32_t getSize() const noexcept { return m_size; }  ///< see Sizes above
    /// The bytes that getSamples() really has.
    std::size_t getAllocatedSize() const noexcept { return (m_isFloat ? 4 : 1) * std::size_t{m_size}; }

    std::uint8_t* getSamples() noexcept { return m_samples.get(); }
    const std::uint8_t* getSamples() const noexcept { return m_samples.get(); }

    /// A mark for the application's use; false at first.
    bool getFlag() const noexcept { return m_flag; }
    void setFlag(bool flag) noexcept { m_flag = flag; }

private:
    std::uint64_t m_frameCount;
    std::uint32_t m_channelCount;
    std::uint32_t m_sampleSize;
    double m_sampleRate;
    bool m_isFloat;
    bool m_flag = false;
    std::uint32_t m_size;
    std::unique_ptr<std::uint8_t[]> m_samples;
};
