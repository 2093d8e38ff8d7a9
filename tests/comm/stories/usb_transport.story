R"story(
== FollowsTheNameToTheDevice
install Other Vid_1234&Pid_0001 1&2&3 7&OTHER
init Talis = 0
| CNuComUsb::InitPrinter -  Try to init USB printer with name Talis\s
| CNuComUsb::InitPrinter -  Try to init printer Talis
| CNuComUsb::InitPrinter -  VID=f055 , PID=0101 , ParentPrefixID= 6&1A2B3C&0 for printer Talis
# Prefixes compare without regard to case.
text E:Vid_f055&Pid_0101\5&77&0&1\|ParentIdPrefix 6&1a2b3c&0
init Talis = 0

== EachBrokenStepOfTheWayHasItsCode
init talis = 302
> CNuComUsb::InitPrinter -  A printer with the name talis has not found in the registry SYSTEM\CurrentControlSet\Control\Print\Printers\\s
open = 304
> CNuComUsb::OpenUsb -  USB device not initialized
unreadable P:
init Talis = 1
> CNuComUsb::InitPrinter -  Error opening registry key: SYSTEM\CurrentControlSet\Control\Print\Printers\\s
open = 304
unreadable E:
init Talis = 1
> CNuComUsb::InitPrinter -  Error opening registry key: SYSTEM\CurrentControlSet\Enum\USB\\s
open = 304
unreadable E:Vid_f055&Pid_0101\
init Talis = 1
> CNuComUsb::InitPrinter -  Error opening registry key: SYSTEM\CurrentControlSet\Enum\USB\Vid_f055&Pid_0101\\s
open = 304
unreadable P:Talis\PnPData
init Talis = 325
> CNuComUsb::InitPrinter -  Error extracting ParentPrefixID from DeviceInstanceID\s
* CNuComUsb::ExtractParentPrefixID -  Error opening registry key: SYSTEM\CurrentControlSet\Control\Print\Printers\Talis\PnPData\s
open = 304
unreadable
text P:Talis\PnPData|DeviceInstanceId USBPRINT\Marbex\6&SOMETHING&ELSE&USB001
init Talis = 303
> CNuComUsb::InitPrinter -  Impossible to associate a VID and a PID to ParentPrefixID 6&SOMETHING&ELSE
noText P:Talis\PnPData|DeviceInstanceId
init Talis = 325
> CNuComUsb::InitPrinter -  Error extracting ParentPrefixID from DeviceInstanceID\s
* CNuComUsb::ExtractParentPrefixID -  Error reading registry value
install Foreign Vid_04b8&Pid_0202 1 6&FOREIGN
init Foreign = 303
> CNuComUsb::InitPrinter -  VID 04b8 not valid
install Short Vid_f055&Pid_01 1 6&SHORT
init Short = 303
> CNuComUsb::InitPrinter -  Impossible to extract VID and PID from registry name Vid_f055&Pid_01\s
open = 304

== OpensThePipesOfThePresentInterface
init Talis = 0
# Before it: one that is no path, one of another model, a twin on another socket, one that cannot be opened.
install Twin Vid_f055&Pid_0101 5&99&0&2 6&TWIN
present \\?\ \\?\usb#vid_f055&pid_0202#x#{} 1 \\?\usb#vid_f055&pid_0101#unusable#{} 0
unusable \\?\usb#vid_f055&pid_0101#unusable#{}
forget
open = 0
paths = \\?\usb#Vid_f055&Pid_0101#5&77&0&1#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}\PIPE01\ \\?\usb#Vid_f055&Pid_0101#5&77&0&1#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}\PIPE00\
| CNuComUsb::OpenUsb -  Open on interface type: 1
open = 305
> CNuComUsb::OpenUsb -  USB device is already opened
init Talis = 301
> CNuComUsb::InitPrinter -  Init failed: USB device already opened
close = 0
> CNuComUsb::CloseUsb -  Close handle : success
pipes = 0
close = 309
> CNuComUsb::CloseUsb -  Usb device not opened: imposible to perform operation

== DeviceThatIsNotThereOrWillNotOpen
init Talis = 0
present
open = 315
> CNuComUsb::OpenUsb -  Impossible to find and open a USB plugged device with VID=f055, PID=0101, PrefixID=6&1A2B3C&0
present 0
unreadable E:Vid_f055&Pid_0101\5&77&0&1\
open = 315
* CNuComUsb::FindSymbolicLinkFromName -  Error opening registry key: SYSTEM\CurrentControlSet\Enum\USB\Vid_f055&Pid_0101\5&77&0&1\\s
unreadable
noText E:Vid_f055&Pid_0101\5&77&0&1\|ParentIdPrefix
open = 315
* CNuComUsb::FindSymbolicLinkFromName -  Error reading registry value
text E:Vid_f055&Pid_0101\5&77&0&1\|ParentIdPrefix 6&1A2B3C&0
openWrite off
open = 308
> CNuComUsb::OpenUsb -  Invalid handle returned opening the USB device
systemError = 5
openWrite on
openRead off
open = 308
pipes = 0
openRead on
# Only the first 128 interfaces are looked at.
present many 127 0
open = 0
close = 0
present many 128 0
open = 315

== RefusesZeroes
timeouts 0 1 = 310
timeouts 1 0 = 310
> CNuComUsb::SetTimeout -  Timeout values can not be=0
packets 0 1 = 9
packets 1 0 = 9
> CNuComUsb::SetPacketUsb -  Packet size can't be = 0
timeouts 0x80000000 7 = 0
> CNuComUsb::SetTimeout Timeout values for USB communication setted to: [send timeout, receive timeout] = [2147483647 , 7 ]

== WritesInPacketsEachWithItsTimeLimit
write 1 = 309
> CNuComUsb::WriteUsb -  Usb device not opened: imposible to perform operation
opened = 0
moveNothing = 0 0 0 0 0
writes =
reads =
mask 12
forget
write 2100 = 0
writes = 1024 1024 52
limits = 3000 3000 3000
written = 2100
| CNuComUsb::WriteUsb -  Bytes to send: 2100, packet byte used:1024
| CNuComUsb::WriteUsb -  2100 bytes to write:
# A short transfer leaves a gap, is warned of and counted.
mask 13
writes done 1
write 2 = 0
written = 1
| CNuComUsb::WriteUsb -  Bytes to send: 2, packet byte used:2
| CNuComUsb::WriteUsb -  2 bytes to write:
| CNuComUsb::WriteUsb -  SendBuffer[0x00]=0x78\s
| CNuComUsb::WriteUsb -  Warning: USB write not completed,not all bytes were written
cancels = write

== FailuresOfATransferHaveTheirCodesAndAreCancelled
opened = 0
writes timedOut 0 at 2
write 3000 = 313
* CNuComUsb::WriteUsb -  USB write error timeout
writes = 1024 1024
cancels = write write
reads timedOut 0
read 16 = 323 0
> CNuComUsb::ReadUsb -  USB read timeout
cancels = read
writes waitFailed 0 at 2
write 3000 = 311
* CNuComUsb::WriteUsb -  USB write generic error\s
reads waitFailed 0
read 16 = 322 0
> CNuComUsb::ReadUsb -  USB read generic error\s
cancels = write write read
writes
writes noResult 0 at 2
write 3000 = 314
* CNuComUsb::WriteUsb -  USB write overlap error
reads noResult 0
read 16 = 324 0
> CNuComUsb::ReadUsb -  USB read overlap error
writes
writes done 0 at 2
write 3000 = 312
* CNuComUsb::WriteUsb -  USB write success, but 0 bytes send
writes = 1024 1024
reads done 0
read 16 = 0 0
# Still open.
pipes = 2

== PrinterGivenUpWhileClosingIsNotWaitedForAgain
opened = 0
writes timedOut 0
write 7 = 313
write 7 = 313
writes = 7 7
closing on
write 7 = 313
write 7 = 313
writes = 7
# A printer that never stops sending is not listened to either.
reads done 4
clean in = 0
reads = 256
closing off
write 7 = 313
writes = 7

== ReadsAtMostAPacket
read 16 = 309 0
opened = 0
reads done 2
read 500 = 0 2
reads = 64
limits = 2000
| CNuComUsb::ReadUsb -  Receive buffer size: 500, packet size setted:64, packet used for read:64\s
| CNuComUsb::ReadUsb -  ReceiveBuffer[0x00]=0x2a\s
| CNuComUsb::ReadUsb -  ReceiveBuffer[0x01]=0x2a\s
mask 2
read 16 = 0 2
| CNuComUsb::ReadUsb -  START
| CNuComUsb::ReadUsb -  2 bytes read:
| CNuComUsb::ReadUsb -  END

== LogsStartAndEndOfEveryOperation
mask 2
init Talis
timeouts 3000 2000
packets 1024 64
open
write 1
clean out in
close
| CNuComUsb::InitPrinter -  START
| CNuComUsb::ExtractParentPrefixID -  START
| CNuComUsb::ExtractParentPrefixID -  END
| CNuComUsb::InitPrinter -  END
| CNuComUsb::SetTimeout -  START
| CNuComUsb::SetTimeout -  END
| CNuComUsb::SetPacketUsb -  START
| CNuComUsb::SetPacketUsb -  END
| CNuComUsb::OpenUsb -  START
| CNuComUsb::FindSymbolicLinkFromName -  START
| CNuComUsb::FindSymbolicLinkFromName -  END
| CNuComUsb::OpenUsb -  END
| CNuComUsb::WriteUsb -  START
| CNuComUsb::WriteUsb -  END
| CNuComUsb::CleanUsb -  START
| CNuComUsb::CleanUsb -  END
| CNuComUsb::CloseUsb -  START
| CNuComUsb::CloseUsb -  END

== ReadWithALimitGoesOnThroughEmptyTransfers
# Some printers answer every asking, with nothing, until they have something to say.
opened = 0
emptyReads 3
readWithin 500 = arrived 6
limits = 500 490 480 470
reads done 0
readWithin 500 = nothing 0
lastLimit = 0

== CleansItsPipes
clean out in = 309
opened = 0
# A printer that had three chunks to say, and then was silent.
reads timedOut 0 from 4
clean out in = 0
| CNuComUsb::CleanUsb -  USB write channel cleaned
| CNuComUsb::CleanUsb -  USB read channel cleaned
reads = 256 256 256 256
limits = 50 50 50 50
cancels = write read
clean none = 0
reads done 0
clean in = 0
cancelRead off
clean in = 321
> CNuComUsb::CleanUsb -  Error cleaning USB channels
reads waitFailed 0
clean in = 321
cancelWrite off
clean out = 321
> CNuComUsb::CleanUsb -  Error cleaning USB channels

== DrainingEndsWithTheReceiveTimeOut
# A printer with a fault sent its status without end; whoever cleaned its input never came back.
opened = 0
readsTake 40
clean in = 0
readCount = 50

== FailedCloseTellsWhichPipe
opened = 0
closeWrite off
close = 317
> CNuComUsb::CloseUsb -  Error closing write handle for USB
closeWrite on
closeRead off
close = 318
> CNuComUsb::CloseUsb -  Error closing read handle for USB
closeRead on
close = 0

== UnpluggedDuringAWriteAndPluggedInAgain
opened = 0
mask 12
writes gone 0 at 2
present
write 2000 = 330
| CNuComUsb::WriteUsb -  Bytes to send: 2000, packet byte used:1024
| CNuComUsb::WriteUsb -  2000 bytes to write:
| CNuComUsb::WriteUsb -  Device is no longer available: handle will be closed
| CNuComUsb::CloseUsb -  Close handle : success
pipes = 0
cancels = write
read 16 = 309 0
present 0
# Too soon for another try.
write 1 = 309
clean out in = 309
wait 2000
write 1 = 0
pipes = 2

== UnpluggedDuringAReadAndGivenUpByItsUser
opened = 0
reads gone 0
# Nor can what is gone be closed.
closeWrite off
read 16 = 330 0
* CNuComUsb::ReadUsb -  Device is no longer available: handle will be closed
pipes = 0
cancels = read
close = 309
write 1 = 309
pipes = 0
)story"
