// kestrel/foundation/KSSingleton.h - process-wide objects with a defined order of destruction.
#pragma once

#include <kestrel/platform/Export.h>

#include <vector>

/// The base of process-wide objects: deleteSingletons() destroys them from the smallest order number to
/// the largest, whatever the order of static destructors.
///
/// Ownership  every instance is made with new and belongs to the registry; deleting one directly takes it
///            out of the registry.
/// Threads    none of this is locked: create and destroy singletons on one thread.
/// Errors     none.
/// Example
///     struct FontCache : KSSingleton { FontCache() : KSSingleton(20) {} };
///     static FontCache* fonts = new FontCache;
///     KSSingleton::deleteSingletons();  // at shutdown
class KESTREL_API KSSingleton {
public:
    /// One entry of the registry.
    struct Info {
        KSSingleton* object;
        unsigned int order;
    };
    /// Sorts into descending order numbers.
    static bool Compare(const Info& a, const Info& b) { return a.order > b.order; }

    /// Registers this object. Objects with equal numbers are destroyed in no defined order.
    explicit KSSingleton(unsigned int order);
    KSSingleton(const KSSingleton&) = delete;
    KSSingleton& operator=(const KSSingleton&) = delete;
    /// Takes this object out of the registry if it is there.
    virtual ~KSSingleton();

    /// Destroys every registered object. Objects that a destructor registers meanwhile are destroyed too,
    /// the newest first, whatever their number.
    static void deleteSingletons();

private:
    static std::vector<Info> _singletons;
};
