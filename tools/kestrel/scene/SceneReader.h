// tools/kestrel/scene/SceneReader.h - reads a project document, and knows the line of everything in it.
#pragma once

#include <kestrel/Kestrel.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../Terminal.h"
#include "Scene.h"

namespace kestrel::tools::scene {

/// Where faults go: line (0 for a file that cannot be read) and what is wrong.
using FaultSink = std::function<void(long line, const std::string& what)>;

/// The library's reader with a memory of lines. Handlers find it again through of().
class SceneReader final : public KSXMLReadStream {
public:
    /// Reads path, or standard input for "-". Throws std::runtime_error with the reason when that fails.
    static std::unique_ptr<SceneReader> open(const std::string& path, SceneVisitor& visitor,
                                             FaultSink faults);
    static SceneReader& of(KSSerializerReadStream& in) { return static_cast<SceneReader&>(in); }

    /// Reads the whole document and hands its parts to the visitor. True when it is well-formed and holds a
    /// project; every fault has been reported.
    bool readDocument();

    KSStreamElement* getElementInfo(const char* name) override;

    /// The line that element begins on; for elements that are open.
    long lineOf(const KSStreamElement& element) const;
    void fault(long line, const std::string& what);
    /// Ends the reading from inside a handler, without a fault.
    void stop();
    /// False once the document proved malformed, or the reading was stopped.
    bool isSound() const { return !m_stopped && getErrorDescription().empty(); }
    bool hasFaults() const { return m_faultCount > 0; }
    SceneVisitor& visitor() { return m_visitor; }
    /// Makes a fault of each element that nobody knows.
    void setStrict(bool strict) { m_strict = strict; }
    /// The elements that nobody knew, and that were left out with all they hold.
    unsigned long unknownCount() const { return m_unknownCount; }
    /// For visitors that write to the terminal themselves.
    void showNoProgress() { m_showsProgress = false; }

private:
    SceneReader(CFDataRef document, const KSURL& url, SceneVisitor& visitor, FaultSink faults);

    struct Line {
        const KSStreamElement* element;
        long line;
    };

    SceneVisitor& m_visitor;
    FaultSink m_faults;
    std::vector<Line> m_lines;  // of the open elements, the innermost last
    long m_rootLine = 1;
    unsigned long m_unknownCount = 0, m_faultCount = 0, m_elementCount = 0;
    bool m_stopped = false, m_strict = false, m_showsProgress = true;
    Progress m_progress;
};

}  // namespace kestrel::tools::scene
