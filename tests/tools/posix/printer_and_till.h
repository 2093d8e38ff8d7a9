#pragma once

#include <string>
#include <vector>

#include "tools/till.h"
#include "virtual_printer/server.h"

namespace marbex::tools {

// A till and its printer on the loopback. Timeout is in milliseconds, for both ways: long enough for a slow machine,
// short enough to wait for.
struct PrinterAndTill {
    explicit PrinterAndTill(const std::string& model = "TALIS ETHERNET", int timeout = 1000)
        : printer(model),
          till(Till::EthernetProfile(printer.Port(), model) + Till::Number("TimeoutRX", timeout) +
               Till::Number("TimeoutTX", timeout))
    {
    }

    void Lose()
    {
        printer.SetMute(true);
        printer.Refuse(true);
        printer.Drop();
    }
    void Find()
    {
        printer.SetMute(false);
        printer.Refuse(false);
    }

    // Bytes that the till has sent are not on paper yet: waits until so many of a kind have happened, gives all.
    template <class T>
    std::vector<T> Happened(std::size_t count)
    {
        printer.WaitFor([count](const virtual_printer::VirtualPrinter& one) { return one.All<T>().size() >= count; });
        return printer.All<T>();
    }
    Lines Printed(std::size_t count)
    {
        Happened<virtual_printer::TextLine>(count);
        return printer.Lines();
    }

    virtual_printer::TcpPrinterServer printer;
    Till till;
};

}  // namespace marbex::tools
