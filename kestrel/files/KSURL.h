// kestrel/files/KSURL.h - where a file or another resource is.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFURL.h>
#include <kestrel/platform/CarbonFiles.h>
#include <kestrel/platform/Export.h>

/// The location of a file or resource: a thin owner of one platform URL, or of none.
///
/// Paths      POSIX paths, bytes of the file system; a name that is no valid UTF-8 still opens, and shows
///            U+FFFD in texts. A relative path stays relative to the folder that is current when the file is
///            opened.
/// Ownership  holds one reference; copies are made of the URL's text.
/// Threads    no lock; distinct objects may be used on distinct threads.
/// Errors     nothing throws. What is no path and no URL leaves the object empty; an empty KSURL answers null
///            strings and false.
/// Example
///     KSURL shot(KSString("/shots/a.0001.exr"), false);
///     KSURL page(KSString("http://localhost/a.mov"), false);  // "://" makes it a URL text
///     shot.getExtension();                                    // exr
class KESTREL_API KSURL {
public:
    /// Empty.
    KSURL() noexcept = default;
    /// A file of the bytes of path up to its NUL; never read as a URL text.
    KSURL(const char* path, bool isDirectory);
    /// A file of the text "%s:%d:%d" of path and both numbers as signed decimals: the range of a numbered
    /// sequence.
    KSURL(const char* path, unsigned int first, unsigned int second);
    /// Shares url.
    KSURL(CFURLRef url) noexcept;
    /// A text with "://" anywhere in it is a URL, every other one a POSIX path.
    KSURL(const KSString& text, bool isDirectory);
    /// A new URL of other's text.
    KSURL(const KSURL& other);
    KSURL(KSURL&& other) noexcept;
    KSURL& operator=(const KSURL& other);
    KSURL& operator=(KSURL&& other) noexcept;
    ~KSURL() { CFRelease(m_url); }

    /// The platform's object, not retained; null for an empty KSURL.
    CFURLRef cf_url() const noexcept { return m_url; }
    bool empty() const noexcept { return !m_url; }

    KSString getAsFileSystemString() const;  ///< the whole path, without the slash at the end of a folder's
    KSString getPathAsFileSystemString() const;  ///< the path of the containing folder
    KSString getContainingFolder() const;        ///< the same
    KSString getFilename() const;                ///< the last segment of the path
    KSString getShortFilename() const;           ///< the last segment without its extension
    KSString getExtension() const;               ///< without the dot; a null string when there is none
    KSString getAsURLString() const;             ///< the URL's escaped text
    KSString getAsHFSString() const;             ///< the old colon-separated path
    /// The path in Mac OS Roman, "?" for what it cannot hold, with a NUL, in a new buffer that the caller
    /// releases with delete[]; a folder's path keeps its slash. *length, where not null, receives the bytes
    /// without the NUL. An empty KSURL gives null and leaves *length.
    char* getString(unsigned int* length) const;

    /// The old file manager's references exist on its own systems only: elsewhere both answer false.
    bool getFSRef(FSRef* ref) const;
    bool getFSSpec(FSSpec* spec) const;

    void debugShow() const;  ///< writes the URL and a newline to standard error

    // Numbered sequences: the last segment holds "[####]" (digits padded with zeros to the count of "#") or
    // "[@]" (an unpadded number), and ":start:end" ends the text; either number may be missing.

    /// True for a URL with a placeholder in its last segment.
    bool isSequence() const;
    int getSequenceStart() const;   ///< -1 when there is none
    int getSequenceEnd() const;     ///< -1 when there is none
    int getSequenceLength() const;  ///< end - start + 1, so 1 without a range
    /// The same scans over length characters of a text.
    int getSequenceStart(char* text, unsigned int length) const;
    int getSequenceEnd(char* text, unsigned int length) const;
    /// The URL of the member with this index, counted from 0; empty beyond the range and for no sequence.
    /// Without a start, members are numbered from 0.
    KSURL getURLforIndex(unsigned int index) const;

private:
    CFURLRef m_url = nullptr;
};
