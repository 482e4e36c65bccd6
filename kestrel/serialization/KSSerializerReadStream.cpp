#include <kestrel/serialization/KSSerializerReadStream.h>

#include <kestrel/serialization/KSIgnoreElement.h>

#include <cstring>

KSIgnoreElement KSIgnoreElement::ignoreHandler;

namespace {

bool claims(const char* entry, const char* name) {
    return (*entry == *name && std::strcmp(entry, name) == 0) || std::strcmp(entry, "*") == 0;
}

}  // namespace

KSSerializerReadStream::~KSSerializerReadStream() {
    for (KSStreamElement* element : m_elements) delete element;
}

KSStreamElement* KSSerializerReadStream::getElementInfo(const char* name) {
    if (m_handlers.empty() || !name) return nullptr;
    const HandlerInfo& top = m_handlers.back();
    for (const KSScope* scope : top.scopes)
        for (const KSScope* entry = scope; entry->name; ++entry) {
            if (entry->attributeToken != 0 || !claims(entry->name, name)) continue;
            if (!m_spare) return new KSStreamElement(entry->elementToken, scope, top.handler);
            m_spare->m_token = entry->elementToken;
            m_spare->m_scope = scope;
            m_spare->m_handler = top.handler;
            return m_spare.release();
        }
    return nullptr;
}

bool KSSerializerReadStream::pushHandler(KSSerializer* handler) {
    if (!handler) return false;
    KSStreamElement* element = currentElement();
    if (element) ++element->m_handlerCount;
    m_handlers.push_back({{}, handler, element});
    return handler->parseBegin(*this);
}

void KSSerializerReadStream::popHandler() {
    if (m_handlers.empty()) return;
    const std::size_t index = m_handlers.size() - 1;
    m_handlers[index].handler->parseEnd(*this);
    // A handler that parseEnd pushed stays: only this record goes.
    if (index >= m_handlers.size()) return;
    if (KSStreamElement* element = m_handlers[index].element) --element->m_handlerCount;
    m_handlers.erase(m_handlers.begin() + static_cast<std::ptrdiff_t>(index));
}

void KSSerializerReadStream::popAllHandlers() {
    while (!m_handlers.empty()) popHandler();
}

void KSSerializerReadStream::pushScope(const KSScope* scope) {
    if (!m_handlers.empty() && scope) m_handlers.back().scopes.push_back(scope);
}

bool KSSerializerReadStream::ignoreElement() { return pushHandler(&KSIgnoreElement::ignoreHandler); }

void KSSerializerReadStream::pushElement(KSStreamElement* element) {
    if (element) m_elements.push_back(element);
}

void KSSerializerReadStream::popElement() {
    if (m_elements.empty()) return;
    KSStreamElement* element = m_elements.back();
    m_elements.pop_back();
    if (element->m_handlerCount)  // no record may name an element that is gone
        for (HandlerInfo& info : m_handlers)
            if (info.element == element) info.element = nullptr;
    element->recycle();
    m_spare.reset(element);
}

bool KSSerializerReadStream::processElement(KSStreamElement& element) {
    if (!element.m_handler) return false;
    element.m_processed = true;
    return element.m_handler->parseElement(*this, element);
}
