// Writes a bitmap as a picture of the simplest kind, a binary PPM: a line of text, then red, green and blue bytes.
#pragma once

#include <kestrel/Kestrel.h>

/// Writes a bitmap of format 1 (ARGB, 8 bits); alpha is left out. False, after a message, when it cannot.
inline bool writePicture(const KSBitmap& bitmap, const char* path) {
    try {
        KSFileWriteStream file(KSURL(path, false));
        KSString header;
        file << header.sprintf("P6\n%u %u\n255\n", bitmap.getWidth(), bitmap.getHeight());
        const unsigned char* const end = bitmap.getData() + bitmap.getSize();
        for (const unsigned char* pixel = bitmap.getData(); pixel != end; pixel += 4)
            file.write(pixel + 1, 3);
        return true;
    } catch (const KSException_WriteError&) {
        KSPrint("cannot write %s\n", path);
        return false;
    }
}
