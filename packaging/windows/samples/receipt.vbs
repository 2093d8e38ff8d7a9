' A receipt, the cash drawer and, where the printer has one, the customer display.
'
'     cscript //nologo receipt.vbs Till1
'
' On 64-bit Windows cscript is a 64-bit program and needs the x64 package and 64-bit control objects;
' C:\Windows\SysWOW64\cscript.exe is the 32-bit one.
Option Explicit

Const PTR_S_RECEIPT = 2
Const PTR_CP_FULLCUT = 100
Const DISP_DT_NORMAL = 0

Dim device, esc, printer, drawer, display, hasDisplay

device = "Till1"
If WScript.Arguments.Count > 0 Then device = WScript.Arguments(0)
esc = Chr(27)

' The printer comes first, and goes last: drawer and display work through it.
Set printer = CreateObject("OPOS.POSPrinter")
Check "POSPrinter.Open", printer.Open(device)
Check "POSPrinter.ClaimDevice", printer.ClaimDevice(1000)
printer.DeviceEnabled = True
Check "POSPrinter.DeviceEnabled", printer.ResultCode

Set drawer = CreateObject("OPOS.CashDrawer")
Check "CashDrawer.Open", drawer.Open(device)
Check "CashDrawer.ClaimDevice", drawer.ClaimDevice(0)
drawer.DeviceEnabled = True

Set display = CreateObject("OPOS.LineDisplay")
hasDisplay = False
If display.Open(device) = 0 Then
    If display.ClaimDevice(0) = 0 Then
        display.DeviceEnabled = True
        hasDisplay = display.DeviceEnabled
    End If
End If
If hasDisplay Then
    Check "LineDisplay.ClearText", display.ClearText()
    Check "LineDisplay.DisplayTextAt", display.DisplayTextAt(0, 0, "TOTAL 7,80", DISP_DT_NORMAL)
End If

' Each call returns when the printer has taken what it was given, or says why not.
Check "PrintNormal", printer.PrintNormal(PTR_S_RECEIPT, esc & "|cA" & esc & "|4CCorner Coffee" & vbLf)
Check "PrintNormal", printer.PrintNormal(PTR_S_RECEIPT, "2 x Flat White              7,80" & vbLf)
Check "PrintNormal", printer.PrintNormal(PTR_S_RECEIPT, esc & "|bCTOTAL                   EUR 7,80" & vbLf)
Check "CutPaper", printer.CutPaper(PTR_CP_FULLCUT)
Check "OpenDrawer", drawer.OpenDrawer()

display.Close
drawer.Close
Check "POSPrinter.Close", printer.Close()
WScript.Echo "printed"

Sub Check(what, code)
    If code <> 0 Then
        WScript.Echo what & " gives " & code & "; the log of the driver says more (LogEnabled=3)"
        WScript.Quit 1
    End If
End Sub
