// kestrel/serialization/KSIgnoreElement.h - the handler that swallows a subtree.
#pragma once

#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSSerializer.h>

/// A handler without scopes: while it is on top, every element is unknown and is skipped. It writes
/// nothing and accepts everything. KSSerializerReadStream::ignoreElement pushes the one instance that all
/// streams share.
///
/// Threads    has no data, so any number of streams on any threads.
/// Example
///     bool parseElement(KSSerializerReadStream& in, KSStreamElement&) { return in.ignoreElement(); }
class KESTREL_API KSIgnoreElement : public KSSerializer {
public:
    static KSIgnoreElement ignoreHandler;

    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}
    bool parseBegin(KSSerializerReadStream&) override { return true; }
    bool parseEnd(KSSerializerReadStream&) override { return true; }
    bool parseElement(KSSerializerReadStream&, KSStreamElement&) override { return true; }
};
