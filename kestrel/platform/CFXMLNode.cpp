#include <kestrel/platform/CFXMLNode.h>

#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/Utf8.h>
#include <kestrel/platform/detail/XmlNode.h>

#include <type_traits>

__CFXMLNode::~__CFXMLNode() {
    CFRelease(string);
    if (const auto* element = std::get_if<CFXMLElementInfo>(&info)) CFRelease(element->attributes);
    if (const auto* instruction = std::get_if<CFXMLProcessingInstructionInfo>(&info))
        CFRelease(instruction->dataString);
    if (const auto* documentType = std::get_if<CFXMLDocumentTypeInfo>(&info)) {
        CFRelease(documentType->externalID.systemID);
        CFRelease(documentType->externalID.publicID);
    }
}

std::string __CFXMLNode::describe() const {
    return "XML node of kind " + std::to_string(type) + ": " +
           kestrel::detail::utf8Of(kestrel::detail::unitsOf(string));
}

CFXMLNodeTypeCode CFXMLNodeGetTypeCode(CFXMLNodeRef node) { return node ? node->type : CFXMLNodeTypeCode{}; }

CFStringRef CFXMLNodeGetString(CFXMLNodeRef node) { return node ? node->string : nullptr; }

const void* CFXMLNodeGetInfoPtr(CFXMLNodeRef node) {
    if (!node) return nullptr;
    return std::visit(
        [](const auto& info) -> const void* {
            if constexpr (std::is_same_v<std::decay_t<decltype(info)>, std::monostate>)
                return nullptr;
            else
                return &info;
        },
        node->info);
}

CFIndex CFXMLNodeGetVersion(CFXMLNodeRef node) { return node ? node->version : 0; }
