#include "ScenePrinter.h"

#include <algorithm>
#include <span>

#include "../Text.h"

namespace kestrel::tools::scene {
namespace {

constexpr const char *kindStyle = "1", *nameStyle = "32", *labelStyle = "36", *quietStyle = "2";

std::string frames(long long first, long long end) {
    return std::to_string(first) + " to " + std::to_string(end);
}

/// A file by its path, whose characters are not escaped; anything else as it stands.
std::string readable(const KSString& source) {
    const std::string url = utf8(source);
    if (!url.starts_with("file://")) return printable(url);
    const std::string path = utf8(KSURL(source, false).getAsFileSystemString());
    return printable(path.empty() ? url : path);
}

}  // namespace

bool ScenePrinter::project(Project& project) {
    begin(0, "project");
    name(project.name);
    field("version", std::to_string(project.version));
    identifier(project.identifier);
    return end();
}

bool ScenePrinter::composition(Composition& composition) {
    begin(1, "composition");
    name(composition.name);
    field("size", std::to_string(composition.width) + " x " + std::to_string(composition.height));
    field("timecode", printable(utf8(composition.timecodeMode)));
    field("start", std::to_string(composition.start));
    field("duration", std::to_string(composition.duration));
    identifier(composition.identifier);
    bool good = end();
    if (const auto& thumbnail = composition.thumbnail) {
        begin(2, "thumbnail");
        field("size", std::to_string(thumbnail->width) + " x " + std::to_string(thumbnail->height));
        field("armour", std::to_string(utf8(thumbnail->armour).size()) + " characters");
        good = end();
    }
    for (const auto& part : composition.layers) {
        layer(*part);
        good = m_out.isGood();
    }
    return good;
}

void ScenePrinter::layer(const Layer& layer) {
    begin(2, "layer");
    name(layer.name);
    field("frames", frames(layer.in, layer.out));
    const KSString mode = KSBlend::modeName(static_cast<KSBlendMode>(layer.blendMode), false);
    field("blend", mode.empty() ? std::to_string(layer.blendMode) : utf8(mode));
    field("opacity", text(layer.opacity));
    identifier(layer.identifier);
    end();
    if (!layer.source.empty()) {
        begin(3, "source");
        m_line += ' ' + readable(layer.source);
        if (!layer.alpha.empty()) field("alpha", printable(utf8(layer.alpha)));
        end();
    }
    if (layer.transform) {
        const Transform& transform = *layer.transform;
        begin(3, "transform");
        numbers("position", transform.position, 0);
        numbers("rotation", transform.rotation, 0);
        numbers("scale", transform.scale, 1);
        numbers("shear", transform.shear, 0);
        numbers("pivot", transform.pivot, 0);
        numbers("aspect", {&transform.aspect, 1}, 1);
        end();
    }
    if (layer.solid) {
        begin(3, "solid");
        field(printable(utf8(layer.solid->model)).c_str(), text(layer.solid->components));
        field("alpha", text(layer.solid->alpha));
        end();
    }
    if (layer.checker) {
        begin(3, "checker");
        field("size", std::to_string(layer.checker->width) + " x " + std::to_string(layer.checker->height));
        field("square", std::to_string(layer.checker->square));
        end();
    }
    for (const auto& table : layer.keyframes) {
        begin(3, "keyframes");
        name(table->parameter);
        if (!table->interpolation.empty()) field("interpolation", printable(utf8(table->interpolation)));
        for (std::size_t i = 0; i + 1 < table->values.size(); i += 2) {
            constexpr std::size_t most = 2 * 6;  // keys shown, before the rest is only counted
            if (i == most) {
                m_line += paint(quietStyle,
                                " and " + std::to_string(table->values.size() / 2 - most / 2) + " more");
                break;
            }
            field(text(table->values[i]).c_str(), text(table->values[i + 1]));
        }
        end();
    }
}

void ScenePrinter::begin(int level, const char* kind) {
    m_line.assign(static_cast<std::size_t>(level) * 2, ' ');
    m_line += paint(kindStyle, kind);
}

void ScenePrinter::name(const KSString& name) {
    m_line += ' ' + paint(nameStyle, '"' + printable(utf8(name)) + '"');
}

void ScenePrinter::field(const char* label, const std::string& value) {
    m_line += "  " + paint(labelStyle, label) + ' ' + value;
}

void ScenePrinter::numbers(const char* label, std::span<const double> values, double usual) {
    if (std::all_of(values.begin(), values.end(), [&](double value) { return value == usual; })) return;
    field(label, text(values));
}

void ScenePrinter::identifier(const KSUUID& identifier) {
    if (m_identifiers) m_line += "  " + paint(quietStyle, text(identifier));
}

bool ScenePrinter::end() {
    m_line += '\n';
    m_out.write(m_line);
    return m_out.isGood();
}

std::string ScenePrinter::paint(const char* style, const std::string& text) const {
    return m_color ? std::string("\033[") + style + 'm' + text + "\033[0m" : text;
}

}  // namespace kestrel::tools::scene
