#include <kestrel/serialization/KSException.h>

// Out of line, so that the classes have one home in the library and can be caught across its border.
KSException::~KSException() = default;
KSException_WriteError::~KSException_WriteError() = default;
KSException_ScopeUndefined::~KSException_ScopeUndefined() = default;
KSException_AttributeUndefined::~KSException_AttributeUndefined() = default;
KSException_NoElementDefined::~KSException_NoElementDefined() = default;
