// kestrel transform: composes a matrix from named parameters, prints it, and maps points through it.
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Commands.h"
#include "InputLines.h"
#include "Text.h"

namespace kestrel::tools {

namespace {

constexpr double pi = 3.141592653589793;

struct Options {
    std::string position = "0,0,0", rotation = "0", scale = "1,1,1", shear = "0,0", pivot = "0,0,0",
                aspect = "1";
    std::string matrix;
    bool space = false, radians = false, inverse = false, map = false, perspective = false, pixels = false;
};

bool isSeparator(char c) { return c == ' ' || c == '\t' || c == ',' || c == '\r'; }

/// The numbers of a text, between commas or blanks, whatever the locale; nullopt if anything else is in it.
std::optional<std::vector<double>> readNumbers(std::string_view text) {
    std::vector<double> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        while (at != end && isSeparator(*at)) ++at;
        if (at == end) return numbers;
        if (*at == '+' && end - at > 1 && at[1] != '-') ++at;
        double value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc() || (next != end && !isSeparator(*next))) return {};
        numbers.push_back(value);
        at = next;
    }
}

[[noreturn]] void fail(const std::string& message) {
    std::fflush(stdout);  // what was printed comes first, even into one pipe
    std::fprintf(stderr, "kestrel transform: %s\n", message.c_str());
    throw Exit{2};
}

/// An option's numbers, from least to most of them.
std::vector<double> readOption(const char* name, const std::string& text, std::size_t least,
                               std::size_t most) {
    auto numbers = readNumbers(text);
    if (!numbers) fail(std::string(name) + ": " + inQuotes(text) + " is not a list of numbers");
    if (numbers->size() < least || numbers->size() > most) {
        fail(std::string(name) + ": expected " + (least < most ? std::to_string(least) + " to " : "") +
             std::to_string(most) + (most == 1 ? " number" : " numbers") + ", found " +
             std::to_string(numbers->size()) + " in " + inQuotes(text));
    }
    return *numbers;
}

void append(std::string& text, double value) {
    value += 0.0;                                    // -0 becomes 0
    if (std::isnan(value)) value = std::abs(value);  // whose sign differs between processors
    char buffer[32];
    text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

void append(std::string& text, std::span<const double> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) text += ' ';
        append(text, values[i]);
    }
    text += '\n';
}

void put(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        fail(std::string("standard output: ") + std::strerror(errno));
}

void printRow(const char* name, std::span<const double> values) {
    std::string text = name;
    text.resize(14, ' ');
    append(text, values);
    put(text);
}

template <class M>
void printRows(const char* name, const M& m, std::size_t order) {
    const auto entries = std::bit_cast<std::array<double, sizeof m / sizeof(double)>>(m);
    for (std::size_t row = 0; row < order; ++row)
        printRow(row == 0 ? name : "", std::span(entries).subspan(row * order, order));
}

/// The two sizes of matrix behind one set of names.
struct Plane {
    using Matrix = KSMatrix33;
    using Point = KSVector2<double>;
    static constexpr std::size_t order = 3, coordinates = 2, angles = 1;

    static Matrix compose(const std::vector<double>& t, const std::vector<double>& r,
                          const std::vector<double>& s, const std::vector<double>& shear,
                          const std::vector<double>& p, double aspect) {
        Matrix m;
        m.setTransformation(t[0], t[1], r[0], s[0], s[1], shear[0], shear[1], p[0], p[1], aspect);
        return m;
    }
    static void project(const Matrix& m, Point& p) { m.perspectiveTransform(&p.x, &p.y); }
    static void printDecomposition(const Matrix& m, double turn) {
        double tx, ty, rotation, sx, sy, shear;
        m.decompose(&tx, &ty, &rotation, &sx, &sy, &shear);
        printRow("position", std::vector{tx, ty});
        printRow("rotation", std::vector{rotation / turn});
        printRow("scale", std::vector{sx, sy});
        printRow("shear", std::vector{shear});
    }
};

struct Space {
    using Matrix = KSMatrix44;
    using Point = KSVector3<double>;
    static constexpr std::size_t order = 4, coordinates = 3, angles = 3;

    static Matrix compose(const std::vector<double>& t, const std::vector<double>& r,
                          const std::vector<double>& s, const std::vector<double>& shear,
                          const std::vector<double>& p, double aspect) {
        return Matrix(t[0], t[1], t[2], r[0], r[1], r[2], s[0], s[1], s[2], shear[0], shear[1], p[0], p[1],
                      p[2], aspect);
    }
    static void project(const Matrix& m, Point& p) {
        const KSVector4<double> v = m * KSVector4<double>(p.x, p.y, p.z, 1);
        p = {v.x / v.w, v.y / v.w, v.z / v.w};
    }
    static void printDecomposition(const Matrix& m, double turn) {
        double tx, ty, tz, rx, ry, rz, sx, sy, sz, xz, yz;
        Matrix rows = m;  // the parts are read from rows
        rows.transpose();
        if (!rows.getTransformation(&tx, &ty, &tz, &rx, &ry, &rz, &sx, &sy, &sz, &xz, &yz)) {
            put(m.m33 == 0 ? "decomposition none: the last entry is 0\n"
                           : "decomposition none: the upper left 3x3 part is singular\n");
            return;
        }
        // Those angles turn by the transpose of the rotation, so once more for the rotation by itself.
        Matrix rotation(0, 0, 0, rx, ry, rz, 1, 1, 1, 0, 0, 0, 0, 0, 1);
        rotation.transpose();
        rotation.getTransformation(nullptr, nullptr, nullptr, &rx, &ry, &rz, nullptr, nullptr, nullptr,
                                   nullptr, nullptr);
        printRow("position", std::vector{tx, ty, tz});
        printRow("rotation", std::vector{rx / turn, ry / turn, rz / turn});
        printRow("scale", std::vector{sx, sy, sz});
        printRow("shear xz yz", std::vector{xz, yz});
    }
};

template <class Size>
typename Size::Matrix readMatrix(const Options& options) {
    if (!options.matrix.empty()) {
        constexpr std::size_t entries = Size::order * Size::order;
        const auto values = readOption("--matrix", options.matrix, entries, entries);
        std::array<double, entries> inOrder;
        std::copy_n(values.begin(), entries, inOrder.begin());
        return std::bit_cast<typename Size::Matrix>(inOrder);
    }
    const double turn = options.radians ? 1 : pi / 180;
    auto rotation = readOption("--rotate", options.rotation, 1, Size::angles);
    if (rotation.size() == 1 && Size::angles == 3) rotation = {0, 0, rotation[0]};  // about z
    if (rotation.size() != Size::angles) fail("--rotate: expected one angle or three");
    auto shear = readOption("--shear", options.shear, 2, 2);
    for (double& angle : rotation) angle *= turn;
    for (double& angle : shear) angle *= turn;
    // In space the third coordinate may be left out.
    auto position = readOption("--position", options.position, 2, 3),
         pivot = readOption("--pivot", options.pivot, 2, 3);
    auto scale = readOption("--scale", options.scale, 1, 3);
    if (scale.size() == 1) scale.assign(3, scale[0]);
    position.resize(3, 0), pivot.resize(3, 0), scale.resize(3, 1);
    return Size::compose(position, rotation, scale, shear, pivot,
                         readOption("--aspect", options.aspect, 1, 1)[0]);
}

template <class Size>
void mapPoints(const typename Size::Matrix& matrix, const Options& options) {
    using Coordinates = std::array<double, Size::coordinates>;
    std::vector<typename Size::Point> points;
    std::string text;
    const auto flush = [&] {
        if (options.perspective) {
            for (auto& point : points) Size::project(matrix, point);
        } else {
            matrix.transform(points);
        }
        text.clear();
        for (const auto& point : points) {
            auto values = std::bit_cast<Coordinates>(point);
            if (options.pixels)
                for (double& value : values) value = std::floor(value + 0.5 + 1e-7);
            append(text, values);
        }
        put(text);
        points.clear();
    };
    const bool isRead = forEachInputLine([&](std::string_view line, std::size_t number) {
        const auto values = readNumbers(line);
        if (values && values->empty()) return;
        if (!values || values->size() != Size::coordinates) {
            flush();  // what came before stands
            fail("standard input:" + std::to_string(number) + ": expected " +
                 std::to_string(Size::coordinates) + " numbers, found " + inQuotes(line));
        }
        Coordinates coordinates;
        std::copy_n(values->begin(), Size::coordinates, coordinates.begin());
        points.push_back(std::bit_cast<typename Size::Point>(coordinates));
        if (points.size() == 4096) flush();
    });
    const int error = errno;
    flush();
    if (!isRead) fail(std::string("standard input: ") + std::strerror(error));
}

template <class Size>
void run(const Options& options) {
    auto matrix = readMatrix<Size>(options);
    auto inverse = matrix;
    const bool regular = inverse.invert();
    if (options.inverse) {
        if (!regular) fail("the matrix is singular: it has no inverse");
        std::swap(matrix, inverse);
    }
    if (options.map) return mapPoints<Size>(matrix, options);
    printRows("matrix", matrix, Size::order);
    printRow("determinant", std::vector{matrix.determinant()});
    if (regular) {
        printRows("inverse", inverse, Size::order);
    } else {
        put("inverse       none: the matrix is singular\n");
    }
    Size::printDecomposition(matrix, options.radians ? 1 : pi / 180);
}

}  // namespace

void addTransform(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "transform",
        "Compose a matrix from named parameters; print it, its inverse and parts, or map points");
    command->add_flag("--3d", options->space,
                      "Points of space and a 4x4 matrix, instead of the plane and 3x3");
    command->add_option("--position", options->position, "X,Y[,Z] where the pivot lands");
    command->add_option("--rotate", options->rotation, "The angle; with --3d the one about z, or X,Y,Z");
    command->add_option("--scale", options->scale, "One factor for all, or X,Y[,Z]");
    command->add_option("--shear", options->shear, "X,Y angles whose tangents shear");
    command->add_option("--pivot", options->pivot, "X,Y[,Z] the point that the rest turns about");
    command->add_option("--aspect", options->aspect, "Width of a pixel over its height");
    command->add_option("--matrix", options->matrix, "All 9 or 16 entries, row by row, instead of the above")
        ->excludes("--position")
        ->excludes("--rotate")
        ->excludes("--scale")
        ->excludes("--shear")
        ->excludes("--pivot")
        ->excludes("--aspect");
    command->add_flag("--radians", options->radians, "Angles in radians, not degrees");
    command->add_flag("--inverse", options->inverse, "Take the inverse of the matrix");
    CLI::Option* map = command->add_flag(
        "--map", options->map, "Map the points of standard input, one a line, and print nothing else");
    command->add_flag("--perspective", options->perspective, "Divide mapped points by their weight")
        ->needs(map);
    command->add_flag("--pixels", options->pixels, "Round mapped points to whole pixels")->needs(map);
    command->footer(
        "Examples:\n"
        "  kestrel transform --position 960,540 --rotate 30 --scale 2\n"
        "  echo 100 200 | kestrel transform --position 960,540 --pivot 50,50 --map");
    command->callback([options] {
        if (options->space) {
            run<Space>(*options);
        } else {
            run<Plane>(*options);
        }
    });
}

}  // namespace kestrel::tools
