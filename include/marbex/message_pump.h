#pragma once

// Events are delivered on the thread that opened the service, while that thread runs its messages. On Windows
// every message loop does so; on Linux an application calls these functions, which libmarbexopos.so exports.

#include <cstdint>

#pragma GCC visibility push(default)
extern "C" {

// A descriptor of the calling thread that is readable while messages wait for it: for epoll, GLib, Qt and the like.
// It stays valid for the life of the thread and is never read or closed by the application. -1 when none can be made.
int MarbexMessageDescriptor();

// Runs the messages of the calling thread: those that wait, and, until timeoutMilliseconds have passed, those that
// come. 0 only runs what waits; a negative time waits without limit for the first message.
// Returns the number of messages run.
int32_t MarbexRunMessages(int32_t timeoutMilliseconds);
}
#pragma GCC visibility pop
