// A Super I/O library for tests: registers of all ones, and a record of every access.

#include <cstdio>
#include <map>
#include <string>
#include <utility>

namespace {

std::map<std::pair<int, int>, int> registers;
std::string record;

void Note(char kind, int device, int index, int value)
{
    char line[32];
    std::snprintf(line, sizeof line, "%c%d.%02X=%02X ", kind, device, index, value);
    record += line;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int _CRRead(int device, int index)
{
    const int value = registers.try_emplace({device, index}, 0xFF).first->second;
    Note('r', device, index, value);
    return value;
}

extern "C" __attribute__((visibility("default"))) void _CRWrite(int device, int index, int value)
{
    registers[{device, index}] = value;
    Note('w', device, index, value);
}

extern "C" __attribute__((visibility("default"))) const char* RecordedAccesses()
{
    return record.c_str();
}
