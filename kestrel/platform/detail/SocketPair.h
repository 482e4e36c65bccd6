// kestrel/platform/detail/SocketPair.h - a connected pair of local stream sockets that carries single bytes.
#pragma once

namespace kestrel::detail {

/// Both ends, close-on-exec; both -1 when the pair could not be made.
struct SocketPair {
    int readEnd = -1;
    int writeEnd = -1;
};

SocketPair openSocketPair();
void closeSocketPair(const SocketPair& pair);

/// Puts one byte into the pair, or takes one out. Neither ever blocks, raises SIGPIPE, is disturbed by a
/// signal handler or is a cancellation point. False when nothing was moved.
bool sendByte(int writeEnd, char byte);
bool receiveByte(int readEnd);

}  // namespace kestrel::detail
