// kestrel/serialization/KSException.h - what the streams and serializers throw.
//
// The exceptions carry no message, no code and no other data: the class alone is the information. They are
// thrown by value and caught by reference.
#pragma once

#include <kestrel/platform/Export.h>

#include <exception>

/// The base of the family; never thrown by itself.
class KESTREL_API KSException : public std::exception {
public:
    ~KSException() override;
};

/// A file stream cannot be opened for writing, or took fewer bytes than it was given.
class KESTREL_API KSException_WriteError : public KSException {
public:
    ~KSException_WriteError() override;
};

/// An element or attribute token must be resolved while the current scope is a null pointer.
class KESTREL_API KSException_ScopeUndefined : public KSException {
public:
    ~KSException_ScopeUndefined() override;
};

/// An attribute token is not defined for the open element in the current scope.
class KESTREL_API KSException_AttributeUndefined : public KSException {
public:
    ~KSException_AttributeUndefined() override;
};

/// An element token is not in the current scope, or an element is ended, or a value or an attribute written,
/// while no element is open.
class KESTREL_API KSException_NoElementDefined : public KSException {
public:
    ~KSException_NoElementDefined() override;
};
