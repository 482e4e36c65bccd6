// Text: making it, editing it, finding in it, and the encodings that it comes and goes in.
//
// It prints
//     Hello, Kestrel
//     HELLO, Kestrel!
//     Hello
//     Café costs 5 €, in 14 units
//     Zürich
//     shot_020.exr
//     a before b: yes
//     Add|Subtract|Intersect|Difference|Replace
#include <kestrel/Kestrel.h>

#include <cstdlib>
#include <memory>

namespace {

/// What a create... function returns belongs to the caller, who releases it with free.
void print(const KSString& text) {
    const std::unique_ptr<char, decltype(&std::free)> utf8(text.createUTF8Str(), &std::free);
    KSPrint("%s\n", utf8 ? utf8.get() : "(null)");
}

/// A KSString keeps a reference of its own to the platform's text, so the one that was made here can go.
KSString fromUtf8(const char* text) {
    CFStringRef made = CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
    const KSString result(made);
    CFRelease(made);
    return result;
}

}  // namespace

int main() {
    KSString greeting("Hello");
    greeting.append(", ").append("Kestrel");
    print(greeting);

    // A copy costs no more than a counter, and neither of the two ever sees the other change.
    KSString loud = greeting;
    loud.replace(0, 5, "HELLO").append("!");
    print(loud);
    print(greeting.substr(0, static_cast<unsigned int>(greeting.find(","))));

    // A plain const char* is Mac OS Roman: its 0x8E is an e with an acute accent. UTF-8 is asked for by name.
    KSString price("Caf\x8e");
    price.append(fromUtf8(" costs 5 €"));
    KSString units;
    units.sprintf(", in %u units", price.size());
    print(price.append(units));

    // Bytes in an encoding that nobody told: the likeliest one that takes them all.
    CFStringRef guessed = CFStringCreateWithSniffingEncoding("Z\xc3\xbcrich");
    print(KSString(guessed));
    CFRelease(guessed);

    KSString file;
    print(file.sprintf("shot_%03d.exr", 20));
    KSPrint("a before b: %s\n", KSString("a").compare("b") < 0 ? "yes" : "no");

    // Texts for people stand in string tables, in the user's language where there is one.
    print(KSString("Mask Blend Modes", KESTREL_BUNDLE_IDENTIFIER));
}
