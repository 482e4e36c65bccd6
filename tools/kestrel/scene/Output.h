// tools/kestrel/scene/Output.h - standard output whose failure is noticed.
#pragma once

#include <string>
#include <string_view>

namespace kestrel::tools::scene {

/// Standard output. A reader that goes away or a full disk is an error like any other, not a signal.
class Output {
public:
    Output();
    void write(std::string_view text);
    bool isGood() const { return m_reason.empty(); }
    /// Flushes; complains on standard error and throws Exit when anything was not written.
    void finish();
    bool isTerminal() const;

private:
    std::string m_reason;
};

}  // namespace kestrel::tools::scene
