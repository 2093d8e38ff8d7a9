// A till written in JScript: late bound, its numbers are what the language makes of them.
var events = { StatusUpdateEvent: 0, OutputCompleteEvent: 0, ErrorEvent: 0, DirectIOEvent: 0 };

function Say(text) {
    WScript.Echo(text);
}
function Event(name, details) {
    events[name]++;
    Say("! " + name + " POSPrinter " + details);
}
// Wine's WScript has no Sleep; the tests lend it one.
var patience = WScript;
function Sleep(time) {
    try {
        patience.Sleep(time);
    } catch (e) {
        patience = new ActiveXObject("MarbexTests.Patience");
    }
}
function Expect(name) {
    for (var i = 0; i < 2000 && events[name] == 0; i++) Sleep(10);
    if (events[name] == 0) {
        Say("? no " + name);
        WScript.Quit(2);
    }
    events[name]--;
    Result(0);
}
function Result(code) {
    Say("= " + code);
}
function Write(property, value) {
    printer.SetPropertyNumber(property, value);
    Say("=");
}
function Quoted(text) {
    return '"' + text.replace(/\x1b/g, "\\x1B").replace(/\x00/g, "\\x00") + '"';
}

var control = {
    SOStatusUpdate: function (data) { Event("StatusUpdateEvent", data); },
    SOOutputComplete: function (id) { Event("OutputCompleteEvent", id); },
    SOError: function (code, extended, locus, response) {
        Event("ErrorEvent", code + " " + extended + " " + locus + " " + response);
    },
    SODirectIO: function (number, data, text) { Event("DirectIOEvent", number + " " + data + " " + Quoted(text)); }
};

var printer = new ActiveXObject("Service.MarbexOposPrnDriver");
Result(printer.OpenService("POSPrinter", "Till1", control));
Result(printer.ClaimDevice(1000));
Write(3, 1);
Expect("StatusUpdateEvent");

Result(printer.PrintBitmap(2, "tests/till/logo.bmp", 200, -2));
Result(printer.PrintNormal(2, "\x1b|cA\x1b|4CCaf\xe9 M\xfcnster\x1b|N\n\xc6r\xf8sk\xf8bing 3 - S\xe3o Tom\xe9\n"));
Result(printer.PrintNormal(7.0, "no such station"));
Result(printer.DirectIO("0", 3, "\x1b!\x00"));
// Wine's JScript takes no arguments by reference, such as this event has; there it does not arrive.
for (var i = 0; i < 200 && events.DirectIOEvent == 0; i++) Sleep(10);
Result(0);

Write(8001, true);
Result(printer.PrintNormal(2, "\x1b|bC\x1b|3CSUMME            57,80\x1b|N\nBar              60,00\n"));
Result(printer.PrintBarCode(2, "{B20417-0314", 110, 72, 400, -2, -13));
Result(printer.PrintBarCode(2, "4006381333931", 104, 60, 2, -2, -13));
Result(printer.PrintNormal(2, "Merci, \xe0 bient\xf4t\n"));
for (var job = 0; job < 7; job++) Expect("OutputCompleteEvent");
Write(8001, false);
Result(printer.CutPaper(100));
for (job = 0; job < 2; job++) Expect("OutputCompleteEvent");
Result(printer.ReleaseDevice());
Result(printer.CloseService());
