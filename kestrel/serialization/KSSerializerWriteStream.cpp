#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSSerializerWriteStream.h>

KSSerializerWriteStream::KSSerializerWriteStream() = default;
KSSerializerWriteStream::~KSSerializerWriteStream() = default;

void KSSerializerWriteStream::reset() {}

void KSSerializerWriteStream::pushScope(const KSScope* scope) { m_scopes.push_back(scope); }

void KSSerializerWriteStream::popScope() noexcept {
    if (!m_scopes.empty()) m_scopes.pop_back();
}
