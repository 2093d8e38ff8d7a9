// A receipt and the cash drawer in C#, late bound: nothing to reference, no wrapper to make.
//
//     csc /platform:x64 /r:Microsoft.CSharp.dll Receipt.cs          (x86 with 32-bit control objects and the x86 package)
//     Receipt.exe Till1
//
// AnyCPU runs as whatever the machine is: say the width.

using System;

public static class Receipt
{
    private const int PTR_S_RECEIPT = 2;
    private const int PTR_CP_FULLCUT = 100;

    private static dynamic Create(string progId)
    {
        return Activator.CreateInstance(Type.GetTypeFromProgID(progId, true));
    }

    private static void Check(string what, int code)
    {
        if (code != 0) throw new InvalidOperationException(what + " gives " + code);
    }

    // Single threaded, so that events arrive in the thread's message loop.
    [STAThread]
    public static int Main(string[] arguments)
    {
        string device = arguments.Length > 0 ? arguments[0] : "Till1";
        try
        {
            // The printer comes first, and goes last: the drawer works through it.
            dynamic printer = Create("OPOS.POSPrinter");
            Check("Open", (int)printer.Open(device));
            Check("ClaimDevice", (int)printer.ClaimDevice(1000));
            printer.DeviceEnabled = true;
            Check("DeviceEnabled", (int)printer.ResultCode);

            dynamic drawer = Create("OPOS.CashDrawer");
            Check("Open", (int)drawer.Open(device));
            Check("ClaimDevice", (int)drawer.ClaimDevice(0));
            drawer.DeviceEnabled = true;
            Check("DeviceEnabled", (int)drawer.ResultCode);

            Check("PrintNormal", (int)printer.PrintNormal(PTR_S_RECEIPT, "\x1B|cA\x1B|4CCorner Coffee\n"));
            Check("PrintNormal", (int)printer.PrintNormal(PTR_S_RECEIPT, "2 x Flat White              7,80\n"));
            Check("PrintNormal", (int)printer.PrintNormal(PTR_S_RECEIPT, "\x1B|bCTOTAL                   EUR 7,80\n"));
            Check("CutPaper", (int)printer.CutPaper(PTR_CP_FULLCUT));
            Check("OpenDrawer", (int)drawer.OpenDrawer());

            Check("Close", (int)drawer.Close());
            Check("Close", (int)printer.Close());
            Console.WriteLine("printed");
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine(error.Message + "; the log of the driver says more (LogEnabled=3)");
            return 1;
        }
    }
}
