#include "FrameState.h"

#include <charconv>

namespace kestrel::tools::render {
namespace {

/// To be raised whenever the same state gives other pixels.
constexpr const char* drawing = "kestrel drawing 1";

/// Appends numbers so that each reads back as exactly the same.
class Line {
public:
    explicit Line(std::string& text) : m_text(text) {}
    ~Line() { m_text += '\n'; }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    template <class Number>
    Line& operator<<(Number number) {
        char digits[32];
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
        m_text += ' ';
        return *this;
    }
    Line& operator<<(const char* word) {
        m_text += word;
        m_text += ' ';
        return *this;
    }

private:
    std::string& m_text;
};

}  // namespace

std::string FrameState::describe() const {
    std::string text;
    Line(text) << drawing;
    Line(text) << "composition" << width << height << "canvas" << canvas.width << canvas.height
               << canvas.proxy << canvas.samples << "timecode" << timecode.c_str();
    for (const LayerState& layer : layers) {
        Line line(text);
        const KSMatrix33& m = layer.matrix;
        line << "layer" << layer.blendMode << layer.opacity << m.m00 << m.m01 << m.m02 << m.m10 << m.m11
             << m.m12;
        if (layer.file)
            line << (layer.file->isBlack ? "black" : "file") << static_cast<int>(layer.alpha)
                 << layer.file->size << layer.file->modified << layer.file->path.c_str();
        else if (layer.checker)
            line << "checker" << layer.checker->width << layer.checker->height << layer.checker->square;
        else
            line << "solid" << layer.color[0] << layer.color[1] << layer.color[2] << layer.color[3];
    }
    return text;
}

KSHash128 digestOf(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned int>(text.size())};
}

}  // namespace kestrel::tools::render
