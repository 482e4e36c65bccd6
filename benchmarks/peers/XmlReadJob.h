// benchmarks/peers/XmlReadJob.h - one job for every XML reader: 100,000 layers with attributes and values.
#pragma once

#include <cstdint>
#include <string>

/// What a reader took from the document. Each reader must extract every attribute and value as what it is:
/// numbers as numbers, names as text.
struct XmlReadResult {
    std::uint64_t layers = 0;
    std::uint64_t nameUnits = 0;  // the length of all names
    long long integers = 0;       // the sum of all integer attributes
    double doubles = 0;           // the sum of all doubles, in document order
    bool operator==(const XmlReadResult&) const = default;
};

/// The document, made once, and what is in it.
const std::string& getXmlReadDocument();
const XmlReadResult& getXmlReadExpected();

#if KESTREL_PEER_EXPAT
XmlReadResult readWithExpat(const std::string& document);
#endif
#if KESTREL_PEER_PUGIXML
XmlReadResult readWithPugixml(const std::string& document);
#endif
#if KESTREL_PEER_LIBXML2
XmlReadResult readWithLibxml2(const std::string& document);
#endif
