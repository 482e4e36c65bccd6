// tests/serialization/ReadProbe.h - a handler that writes down what happens to it.
#pragma once

#include <kestrel/Kestrel.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

inline std::string utf8(const KSString& string) {
    char* text = string.createUTF8Str();
    std::string result(text ? text : "(null)");
    std::free(text);
    return result;
}

/// Logs begin, end and each element as "name begin", "name end", "name(token=value)"; what it does with an
/// element is up to the test.
class ReadProbe : public KSSerializer {
public:
    using Action = std::function<void(KSSerializerReadStream&, KSStreamElement&)>;

    ReadProbe(std::string name, std::vector<const KSScope*> scopes, std::vector<std::string>& log)
        : m_name(std::move(name)), m_scopes(std::move(scopes)), m_log(log) {}

    Action onElement;
    std::function<void(KSSerializerReadStream&)> onEnd;
    bool result = true;

    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}
    bool parseBegin(KSSerializerReadStream& in) override {
        m_log.push_back(m_name + " begin");
        for (const KSScope* scope : m_scopes) in.pushScope(scope);
        return result;
    }
    bool parseEnd(KSSerializerReadStream& in) override {
        m_log.push_back(m_name + " end");
        if (onEnd) onEnd(in);
        return result;
    }
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override {
        m_log.push_back(m_name + "(" + std::to_string(element.getToken()) + "=" + utf8(element.getValue()) +
                        ")");
        if (onElement) onElement(in, element);
        return result;
    }

private:
    std::string m_name;
    std::vector<const KSScope*> m_scopes;
    std::vector<std::string>& m_log;
};

/// A stream that a test feeds by hand.
class HandFedStream : public KSSerializerReadStream {
public:
    bool parse() override { return true; }
    void abortParse() override {}
    void stopParse() override {}
};
