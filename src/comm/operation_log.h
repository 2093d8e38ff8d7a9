#pragma once

#include <cstdint>

#include "comm/com_layer_log.h"

namespace marbex::comm {

// The lines that one operation of the communication layer writes: all of them under its prefix.
class OperationLog {
public:
    OperationLog(const CComLayerLog& log, const char* prefix) : log_(log), prefix_(prefix) {}

    void Start() const { log_.Write(prefix_, "START\n", kLogCalls); }
    // The end of a success: logs it and returns 0.
    uint32_t End() const
    {
        log_.Write(prefix_, "END\n", kLogCalls);
        return 0;
    }

    void Progress(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    void Call(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    void Bytes(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    void Error(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    // Logs an error whose text needs no arguments and returns its code.
    uint32_t Fail(uint32_t code, const char* message) const
    {
        log_.Write(prefix_, message, kLogErrors);
        return code;
    }

    bool DumpsBytes() const { return log_.DumpsBytes(); }

private:
    const CComLayerLog& log_;
    const char* prefix_;
};

}  // namespace marbex::comm
