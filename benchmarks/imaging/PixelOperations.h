// The operations on pixels that are measured, and how: on frames of 1920x1080 and 3840x2160, in bytes read
// plus written a second. The table is in KSBitmapBench.cpp; other libraries enter beside it.
#pragma once

#include <kestrel/imaging/KSBitmap.h>

#include <functional>
#include <string>

/// What one run does, from frames that live longer.
using PixelRun = std::function<void()>;
/// Makes a run that works on to, from to to to, or from from to to, as the operation does. Both frames hold
/// the same random pixels where their formats and sizes are the same.
using PixelPeer = std::function<PixelRun(KSBitmap& to, KSBitmap& from)>;

/// Measures an operation of the table by another library, as "operation, library". The label tells how many
/// components differ from ours.
void addPixelPeer(const std::string& operation, const std::string& library, PixelPeer peer);
