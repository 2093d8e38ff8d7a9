' A till written in VBScript: late bound, small numbers are 16 bits wide. It has its events written to a file, the way
' tills without a control object open the service.
Option Explicit

Dim happened, printer, patience, job, e, eventFile, taken

Sub Say(text)
    WScript.Echo text
End Sub

Sub Tell(name, details)
    happened(name) = happened(name) + 1
    Say "! " & name & " POSPrinter " & details
End Sub

Sub TellEvent(record)
    Dim fields
    fields = Split(record, vbTab)
    Select Case fields(0)
        Case "A"
            Tell "DirectIOEvent", fields(1) & " " & fields(2) & " " & Quoted(fields(3))
        Case "B"
            Tell "ErrorEvent", fields(1) & " " & fields(2) & " " & fields(3) & " " & fields(4)
        Case "C"
            Tell "OutputCompleteEvent", fields(1)
        Case "D"
            Tell "StatusUpdateEvent", fields(1)
    End Select
End Sub

' The records of the file that have come since the last look.
Sub TakeEvents()
    Dim file, records
    Set file = CreateObject("Scripting.FileSystemObject").OpenTextFile(eventFile)
    If file.AtEndOfStream Then
        records = Split("")
    Else
        records = Split(file.ReadAll, "|")
    End If
    file.Close
    Do While taken < UBound(records)
        TellEvent records(taken)
        taken = taken + 1
    Loop
End Sub

' Wine's WScript has no Sleep; the tests lend it one.
Sub Sleep(time)
    On Error Resume Next
    patience.Sleep time
    If Err.Number <> 0 Then Set patience = CreateObject("MarbexTests.Patience")
End Sub

Sub Expect(name)
    Dim i
    For i = 1 To 1000
        TakeEvents
        If happened(name) > 0 Then Exit For
        Sleep 20
    Next
    If happened(name) = 0 Then
        Say "? no " & name
        WScript.Quit 2
    End If
    happened(name) = happened(name) - 1
    Result 0
End Sub

Sub Result(code)
    Say "= " & code
End Sub

Sub WriteNumber(index, value)
    printer.SetPropertyNumber index, value
    Say "="
End Sub

Function Quoted(text)
    Quoted = """" & Replace(Replace(text, Chr(27), "\x1B"), Chr(0), "\x00") & """"
End Function

e = Chr(27)
taken = 0
eventFile = WScript.Arguments(0)
Set patience = WScript
Set happened = CreateObject("Scripting.Dictionary")
happened("StatusUpdateEvent") = 0
happened("OutputCompleteEvent") = 0
happened("ErrorEvent") = 0
happened("DirectIOEvent") = 0

Set printer = CreateObject("Service.MarbexOposPrnDriver")
Result printer.OpenService_NET("POSPrinter", "Till1", eventFile)
Result printer.ClaimDevice(1000)
WriteNumber 3, True
Expect "StatusUpdateEvent"

Result printer.PrintBitmap(2, "tests/till/logo.bmp", 200, -2)
Result printer.PrintNormal(2, e & "|cA" & e & "|4CCaf" & Chr(233) & " M" & Chr(252) & "nster" & e & "|N" & vbLf & Chr(198) & "r" & Chr(248) & "sk" & Chr(248) & "bing 3 - S" & Chr(227) & "o Tom" & Chr(233) & vbLf)
Result printer.PrintNormal(7, "no such station")
Result printer.DirectIO(0, 3, e & "!" & Chr(0))
Expect "DirectIOEvent"

WriteNumber 8001, 1
Result printer.PrintNormal(2, e & "|bC" & e & "|3CSUMME            57,80" & e & "|N" & vbLf & "Bar              60,00" & vbLf)
Result printer.PrintBarCode(2, "{B20417-0314", 110, 72, 400, -2, -13)
Result printer.PrintBarCode(2, "4006381333931", 104, 60, 2, -2, -13)
Result printer.PrintNormal(2, "Merci, " & Chr(224) & " bient" & Chr(244) & "t" & vbLf)
For job = 1 To 7
    Expect "OutputCompleteEvent"
Next
WriteNumber 8001, 0
Result printer.CutPaper(100)
For job = 1 To 2
    Expect "OutputCompleteEvent"
Next
Result printer.ReleaseDevice()
Result printer.CloseService()
