#include <kestrel/foundation/KSSingleton.h>

#include <algorithm>

// Ready before any constructor runs, for static objects may register.
constinit std::vector<KSSingleton::Info> KSSingleton::_singletons;

KSSingleton::KSSingleton(unsigned int order) { _singletons.push_back({this, order}); }

KSSingleton::~KSSingleton() {
    const auto entry = std::find_if(_singletons.begin(), _singletons.end(),
                                    [this](const Info& info) { return info.object == this; });
    if (entry != _singletons.end()) _singletons.erase(entry);
}

void KSSingleton::deleteSingletons() {
    if (!_singletons.empty()) std::sort(_singletons.begin(), _singletons.end(), Compare);
    while (!_singletons.empty()) {
        KSSingleton* const object = _singletons.back().object;
        _singletons.pop_back();  // first, so that the destructor finds nothing to remove
        delete object;
    }
}
