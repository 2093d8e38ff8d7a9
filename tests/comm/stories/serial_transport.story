R"story(
== InitTellsEachRejectedParameter
init COM1 14400 0 8 0 0 = 1
* CNuComSerial::InitPort -  BaudRate not setted, wrong parameter
open = 101
> CNuComSerial::OpenSerial -  Open failed: serial device has not been initalized
init COM1 9600 3 6 0 0 = 6
init COM1 9600 0 8 1 0 = 8
forget
init COM1 0 3 9 3 3 = 31
| CNuComSerial::EnumPorts -  Searching for serial ports in registry key: Hardware\Devicemap\Serialcomm\\s
| CNuComSerial::EnumPorts -  Serial ports found: COM1\s
| CNuComSerial::InitPort -  BaudRate not setted, wrong parameter
| CNuComSerial::InitPort -  Parity not setted, wrong parameter
| CNuComSerial::InitPort -  Byte Size not setted, wrong parameter
| CNuComSerial::InitPort -  Stop Byte not setted, wrong parameter
| CNuComSerial::InitPort -  Flux Control not setted, wrong parameter

== InitNamesWhatItSets
init COM1 115200 2 7 2 1 = 0
| CNuComSerial::EnumPorts -  Searching for serial ports in registry key: Hardware\Devicemap\Serialcomm\\s
| CNuComSerial::EnumPorts -  Serial ports found: COM1\s
| CNuComSerial::InitParameters-  BaudRate setted to 115200\s
| CNuComSerial::InitPort -  Parity setted to Even\s
| CNuComSerial::InitPort -  Byte Size setted to 7\s
| CNuComSerial::InitPort -  Stop Byte setted to 2\s
| CNuComSerial::InitPort -  Flux Control setted to Xon/Xoff\s
init COM1 1200 1 8 0 2 = 0
init COM1 2400 1 8 0 2 = 0
init COM1 4800 1 8 0 2 = 0
init COM1 9600 1 8 0 2 = 0
init COM1 19200 1 8 0 2 = 0
init COM1 38400 1 8 0 2 = 0
init COM1 57600 1 8 0 2 = 0

== PortsAreMatchedWholeAndWithCase
ports a COM10 b COM1 c COM1234567890123456 d COM12345678901234567
isPort COM1 = 1
isPort COM10 = 1
# 19 characters, and 20
isPort COM1234567890123456 = 1
isPort COM12345678901234567 = 0
isPort com1 = 0
isPort COM = 0
isPort COM100 = 0
isPort = 0
isPort COM10|COM1 = 0
enumerate 100 = 0 COM10|COM1|COM1234567890123456|COM12345678901234567
ports a COM10 b COM1
enumerate 10 = 3\s
> CNuComSerial::EnumPorts -  Buffer size parameter can not contain the result
enumerate 11 = 0 COM10|COM1
init COM2 9600 0 8 0 0 = 256
> CNuComSerial::InitPort -  Init failed: comm port COM2 not found
mapReadable off
enumerate 11 = 1\s
> CNuComSerial::EnumPorts -  Error opening registry key: Hardware\Devicemap\Serialcomm\\s
init COM1 9600 0 8 0 0 = 256
ports
enumerate 11 = 0\s
> CNuComSerial::EnumPorts -  No serial ports
# A missing port takes an earlier init away.
open = 101

== OpensThroughALinkOfItsOwn
ports \Device\Serial2 COM3
init COM3 9600 0 8 0 0 = 0
forget
open = 0
| CNuComSerial::OpenSerial -  System version: 8298
| CNuComSerial::OpenSerial -  Serial link: \\.\LinkToSerial3
| CNuComSerial::OpenSerial -  Com port succesfully opened
path = \\.\LinkToSerial3
open = 102
> CNuComSerial::OpenSerial -  Serial device already opened
init COM3 9600 0 8 0 0 = 1024
> CNuComSerial::InitPort -  Init failed: serial device already opened
close = 0
> CNuComSerial::CloseSerial -  Close handle : success
links = +LinkToSerial3=\Device\Serial2 -LinkToSerial3
handles = 0
close = 103
# A link that was there before stays there.
link present
open = 0
close = 0
links =

== SystemVersionsHaveTheirCodes
version 9x 4 0 = 95
version 9x 4 10 = 95
version 9x 4 90 = 19781
version 9x 5 0 = 0
version nt 4 0 = 5133312
version nt 5 0 = 512000
version nt 5 1 = 5787648
version nt 5 2 = 4726784
version nt 5 3 = 8298
version nt 6 0 = 1010
version nt 6 1 = 4790
version nt 6 2 = 8298
version nt 10 0 = 8298
version other 6 1 = 0
# The oldest device maps hold bare names.
ports Serial0 COM1
version nt 4 0
opened = 0
links = +LinkToSerial1=\Device\Serial0

== FailedOpensHaveTheirCodesAndHoldNothing
init COM1 9600 0 8 0 0 = 0
version none
open = 104
> CNuComSerial::OpenSerial -  Impossibile to identify the system
systemError = 5
# There is no path for such a system.
version 9x 4 0
canOpen off
open = 106
> CNuComSerial::OpenSerial -  Open failed: invalid handle returned
path =
version nt 10 0
canDefine off
open = 105
> CNuComSerial::OpenSerial -  Error during creation of symbolic link
* CNuComSerial::CreateComPortLink -  Symbolic link not exists: error creating it
canDefine on
link error
open = 105
* CNuComSerial::CreateComPortLink -  Error querying dos device: link not found and can not create it
link missing
mapReadable off
open = 105
* CNuComSerial::GetTheLinkPathName -  Error opening registry key: Hardware\Devicemap\Serialcomm\\s
mapReadable on
ports \Device\Serial0 COM2
open = 105
> CNuComSerial::OpenSerial -  Error during creation of symbolic link
* CNuComSerial::GetTheLinkPathName -  Link device not found in registry for port COM1\s
ports \Device\Serial0 COM1
links
open = 106
> CNuComSerial::OpenSerial -  Open failed: invalid handle returned
links = +LinkToSerial1=\Device\Serial0 -LinkToSerial1
canOpen on
canApply off
open = 108
> CNuComSerial::OpenSerial -  Open failed: error during SetCommState\s
links = +LinkToSerial1=\Device\Serial0 -LinkToSerial1
canApply on
canLimit off
open = 107
> CNuComSerial::OpenSerial -  Open failed: error during SetCommTimeouts\s
links = +LinkToSerial1=\Device\Serial0 -LinkToSerial1
handles = 0
canLimit on
open = 0

== FlowControlDecidesTheLineSettings
# As the port had it.
parityCheck on
init COM1 19200 1 7 2 0 = 0
open = 0
settings = 19200 7 odd 2 dtr handshake rts handshake parityCheck cts limits 2048 512 characters 0 0 10
close = 0
opened 1 = 0
settings = 9600 8 none 1 dtr enabled rts enabled parityCheck cts xonOut xonIn limits 2048 512 characters 17 19 10
close = 0
opened 2 = 0
settings = 9600 8 none 1 dtr disabled rts disabled parityCheck limits 2048 512 characters 0 0 10

== ModemLinesLeaveHandshakeModeWhenTheyAreSet
dtr on = 103
rts on = 103
opened = 0
dtr on = 0
settings = 9600 8 none 1 dtr enabled rts handshake cts limits 2048 512 characters 0 0 10
rts off = 0
settings = 9600 8 none 1 dtr enabled rts enabled cts limits 2048 512 characters 0 0 10
lines = DTR+ RTS-
canSetLines off
dtr on = 118
> CNuComSerial::SetDTR -  EscapeCommFunctions() error, SetDTR has failed
rts on = 119
> CNuComSerial::SetRTS -  EscapeCommFunctions() error, SetRTS has failed
canApply off
dtr on = 108
rts on = 108
> CNuComSerial::SetRTS -  Open failed: error during SetCommState\s
canGet off
dtr on = 115
rts on = 115
> CNuComSerial::SetRTS -  Impossible to get parameters: GetCommState has failed

== DisabledModemLinesCannotBeSet
opened 2 = 0
dtr on = 120
> CNuComSerial::SetDTR -  Impossibile to set/reset DTR: DTR control disabled
rts on = 121
> CNuComSerial::SetRTS -  Impossibile to set/reset DTR: RTS control disabled
lines =

== TimeoutsComeConstantsFirst
timeouts 1 2 3 4 0xFFFFFFFF = 0
> CNuComSerial::SetTimeout -  Timeout values setted to: [read interval, read constant, read multiplier, constant, write multiplier] = [1 2 3 4 2147483647]
opened = 0
limits = 1 2 3 4 2147483647
timeouts 0 0 10 0 100 = 0
limits = 0 0 10 0 100
canLimit off
timeouts 1 1 1 1 1 = 107
> CNuComSerial::SetTimeout -  Open failed: error during SetCommTimeouts\s
packets 0 1 = 9
packets 1 0 = 9
> CNuComSerial::SetPacketSerial -  Packet size can't be = 0

== WritesInPackets
write 1 = 103
> CNuComSerial::WriteSerial -  Impossibile to perform the operation: device is not open
opened = 0
mask 12
write 2500 = 0
writes = 1024 1024 452
written = 2500
purges =
| CNuComSerial::WriteSerial -  Bytes to send: 2500, packet byte used:1024
| CNuComSerial::WriteSerial -  2500 bytes to write:
moveNothing = 0 0 0 0 0
writes =

== FailedAndShortWritesArePurged
opened = 0
writes fails 0 at 2
write 3000 = 111
* CNuComSerial::WriteSerial -  Write failed: error system occurred during Write()
> CNuComSerial::WriteSerial -  Purge communication ports
writes = 1024 1024
written = 1024
systemError = 5
writes moves 0
write 1 = 112
* CNuComSerial::WriteSerial -  Write failed: no bytes send during writing operation\s
writes moves less
forget
write 3 = 0
written = 2
| CNuComSerial::WriteSerial -  Bytes to send: 3, packet byte used:3
| CNuComSerial::WriteSerial -  3 bytes to write:
| CNuComSerial::WriteSerial -  SendBuffer[0x00]=0x78\s
| CNuComSerial::WriteSerial -  SendBuffer[0x01]=0x78\s
| CNuComSerial::WriteSerial -  Purge communication ports
purges = outin outin outin

== PrinterGivenUpWhileClosingIsNotWaitedForAgain
opened = 0
writes moves 0
write 7 = 112
closing on
write 7 = 112
write 7 = 112
writes = 7 7

== LogsStartAndEndOfEveryOperation
mask 2
init COM1 9600 0 8 0 0
timeouts 1 2 3 4 5
packets 1024 64
open
reads moves 1
write 1
read 1
clean out in
dtr on
rts on
close
| CNuComSerial::InitPort -  START
| CNuComSerial::CheckCom -  START
| CNuComSerial::EnumPorts -  START
| CNuComSerial::EnumPorts -  END
| CNuComSerial::CheckCom -  END
| CNuComSerial::InitPort -  END
| CNuComSerial::SetTimeout -  START
| CNuComSerial::SetTimeout -  END
| CNuComSerial::SetPacketSerial -  START
| CNuComSerial::SetPacketSerial -  END
| CNuComSerial::OpenSerial -  START
| CNuComSerial::GetSystemVersion -  START
| CNuComSerial::GetSystemVersion -  END
| CNuComSerial::CreateComPortLink -  START
| CNuComSerial::GetTheLinkPathName -  START
| CNuComSerial::GetTheLinkPathName -  END
| CNuComSerial::CreateComPortLink -  END
| CNuComSerial::OpenSerial -  END
| CNuComSerial::WriteSerial -  START
| CNuComSerial::WriteSerial -  END
| CNuComSerial::ReadSerial -  START
| CNuComSerial::ReadSerial -  END
| CNuComSerial::CleanSerial -  START
| CNuComSerial::CleanSerial -  END
| CNuComSerial::SetDTR -  START
| CNuComSerial::SetDTR -  END
| CNuComSerial::SetRTS -  START
| CNuComSerial::SetRTS -  END
| CNuComSerial::CloseSerial -  START
| CNuComSerial::CloseSerial -  END

== ReadsOnceAndTellsSilenceFromFailure
read 16 = 103 0
opened = 0
reads moves 2
read 2000 = 0 2
| CNuComSerial::ReadSerial -  Receive buffer size: 2000, packet size setted:1024, packet used for read:1024\s
| CNuComSerial::ReadSerial -  2 bytes read:
| CNuComSerial::ReadSerial -  ReceiveBuffer[0x00]=0x2a\s
| CNuComSerial::ReadSerial -  ReceiveBuffer[0x01]=0x2a\s
reads moves 0
read 16 = 114 0
> CNuComSerial::ReadSerial -  Read failed: no bytes read during reading operation\s
reads fails 0
read 16 = 113 0
> CNuComSerial::ReadSerial -  Read failed: error system occurred during Read()

== CleansWhatIsAskedFor
clean out in = 103
opened = 0
clean none = 0
purges =
clean out in = 0
clean out none = 0
clean none in = 0
purges = outin out in
canPurge off
clean out none = 117
> CNuComSerial::CleanSerial -  Purge error: clean has failed

== FailedCloseLeavesThePortOpen
opened = 0
canClose off
close = 110
> CNuComSerial::CloseSerial -  CloseHandle() failed, impossible to close handle\s
write 1 = 0
canClose on
close = 0

== UnpluggedAdapterIsLetGoAndOpenedAgain
# An adapter that is pulled out and put back is a new device under the old name, if only nobody holds the old one.
opened = 0
dtr on = 0
rts on = 0
gone on
canOpen off
links
writes fails 0
write 1 = 111
handles = 0
links = -LinkToSerial1
# Tried, in vain.
write 1 = 111
canOpen on
gone off
writes moves all
# Too soon for another try.
read 16 = 113 0
clean out in = 117
dtr on = 115
wait 2000
lines
write 1 = 0
lines = DTR+ RTS+
limits = 10 1000 10 1000 100
gone on
reads fails 0
read 16 = 113 0
close = 109
> CNuComSerial::CloseSerial -  Close failed: invalid handle to close
# Its user gave it up.
write 1 = 111
handles = 0
)story"
