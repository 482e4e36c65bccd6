// benchmarks/serialization/SceneWorkload.h - the document that all writers write: 100,000 elements with an
// identifier, a name and two doubles as attributes, and a double as their value.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace workload {

inline constexpr int elementCount = 100'000;

inline double number(int i) { return i * 0.37 + 1.0 / (i + 3); }

/// The text of element i as every writer must give it, without what surrounds it.
inline std::string attributes(int i) {
    char text[160];
    std::snprintf(text, sizeof text, "layer id=\"%d\" name=\"Layer &amp; plate\" x=\"%.10g\" y=\"%.10g\"", i,
                  number(i), number(i) * 0.001);
    return text;
}

inline std::string temporaryFile(const char* name) {
    return (std::filesystem::temp_directory_path() / (std::string("kestrel-bench-") + name)).string();
}

/// The size of a file that holds the attributes of the last element; 0 for another, and the file goes.
inline std::size_t checkAndRemove(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    file.close();
    std::filesystem::remove(path);
    return text.find(attributes(elementCount - 1)) == std::string::npos ? 0 : text.size();
}

}  // namespace workload
