// tools/kestrel/scene/ElementReader.h - attributes and values of one element, with a report of each fault.
#pragma once

#include <kestrel/Kestrel.h>

#include <span>
#include <string>
#include <vector>

#include "SceneReader.h"

namespace kestrel::tools::scene {

/// The library's readers take a text that is no number as 0, which is right for an application that must
/// open what it is given; here such a text is a fault, and the output stays as it was.
class ElementReader {
public:
    ElementReader(SceneReader& reader, KSStreamElement& element, const char* name)
        : m_reader(reader), m_element(element), m_name(name), m_line(reader.lineOf(element)) {}

    long line() const { return m_line; }

    // Attributes. One that is absent is a fault.
    void read(unsigned token, const char* name, int& value) const;
    void read(unsigned token, const char* name, long long& value) const;
    void read(unsigned token, const char* name, double& value) const;
    void read(unsigned token, const char* name, KSUUID& value) const;
    void read(unsigned token, const char* name, KSString& value) const;

    /// As many blank-separated numbers as values has.
    void readValue(std::span<double> values) const;
    /// Any number of them.
    void readValue(std::vector<double>& values) const;

private:
    bool get(unsigned token, const char* name, KSString& value) const;
    template <class Number>
    void readNumber(unsigned token, const char* name, const char* kind, Number& value) const;
    void fault(const std::string& what) const;

    SceneReader& m_reader;
    KSStreamElement& m_element;
    const char* m_name;
    long m_line;
};

}  // namespace kestrel::tools::scene
