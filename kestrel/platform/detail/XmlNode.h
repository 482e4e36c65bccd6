// kestrel/platform/detail/XmlNode.h - the object behind CFXMLNodeRef.
#pragma once

#include <kestrel/platform/CFXMLNode.h>

#include <string>
#include <variant>

struct __CFXMLNode final : kestrel::detail::PlatformObject {
    using Info = std::variant<std::monostate, CFXMLElementInfo, CFXMLProcessingInstructionInfo,
                              CFXMLDocumentTypeInfo, CFXMLEntityReferenceInfo, CFXMLDocumentInfo>;

    /// Takes over the references in string and info.
    __CFXMLNode(CFXMLNodeTypeCode kind, CFStringRef name, Info details, CFIndex nodeVersion)
        : type(kind), string(name), info(details), version(nodeVersion) {}
    ~__CFXMLNode() override;
    std::string describe() const override;

    CFXMLNodeTypeCode type;
    CFStringRef string;
    Info info;
    CFIndex version;
};
