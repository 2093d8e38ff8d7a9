R"story(
== RefusesWhatCannotBe
init 192.168.0.300 = 205
> CNuComEth::InitTCPIp -  Init failed: IP format not correct\s
init = 205
init printer = 205
init 192.168.000.0000001 = 205
init 1.2.3.4.5 = 205
open = 201
> CNuComEth::OpenEth -  Open ethernet failed: no init was done
timeouts 0 5000 = 204
timeouts 5000 0 = 204
> CNuComEth::SetTimeoutEth -  Ethernet timeout values cannot be =0\s
packets 0 5000 = 9
packets 5000 0 = 9
> CNuComEth::SetPacketEth -  Packet size can't be = 0
init 255.255.255.255 = 0
# A failed init takes the earlier one away.
init 1.2.3.400 = 205
open = 201

== NothingMovesWithoutAConnection
discard
init 127.0.0.1 = 0
write 1x = 206
> CNuComEth::WriteEth -  Impossible to perform the operation: socket and connections are not opened
read 64 = 206
> CNuComEth::ReadEth -  Impossible to perform the operation: socket and connections are not opened
close = 206
> CNuComEth::CloseEth -  Impossible to perform the operation: socket and connections are not opened
connects = 0

== OpensOnceAndClosesOnce
opened = 0
open = 202
> CNuComEth::OpenEth -  Open ethernet failed: a connection is already active
init 127.0.0.1 = 200
> CNuComEth::InitTCPIp -  Init failed: a TCP connection is already active
close = 0
gets
close = 206
open = 0
limits = 10000 0 0

== FailedOpenSaysWhyAndHoldsNothing
connecting off
error 5
init 127.0.0.1 = 0
open = 215
> CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket\s
systemError = 5
closes = 1
making off
error 24
open = 207
> CNuComEth::OpenEth -  Socket creation is failed\s
systemError = 24

== FailedCloseLeavesTheConnection
opened = 0
shutting once
close = 206
> CNuComEth::CloseEth -  Impossible to perform the operation: socket and connections are not opened
write 5s = 0
gets 5s
close = 0

== WritesInPacketsAndReadsWhatComes
opened = 0
write 1024a 1024b 952c = 0
sizes = 1024 1024 952
gets 1024a 1024b 952c
written = 3000
says reply
read 3 = 0 rep
read 1000 = 0 ly
limits = 10000 5000 5000

== TimeoutsAboveTheRangeOfASocketAreCut
opened = 0
timeouts 0xFFFFFFFF 0x80000000 = 0
write 1x = 0
says r
read 1 = 0 r
limits = 10000 2147483647 2147483647

== LogsEachStepAndEachByte
opened = 0
write 1x 1y = 0
says ab
read 6 = 0 ab
| CNuComEth::WriteTCP -  Bytes to send: 2, packet byte used:2
| CNuComEth::WriteTCP -  2 bytes to write:
| CNuComEth::WriteTCP -  SendBuffer[0x00]=0x78\s
| CNuComEth::WriteTCP -  SendBuffer[0x01]=0x79\s
| CNuComEth::ReadTCP -  Receive buffer size: 6, packet size setted:256, packet used for read:6\s
| CNuComEth::ReadTCP -  2 bytes read:
| CNuComEth::ReadTCP -  ReceiveBuffer[0x00]=0x61\s
| CNuComEth::ReadTCP -  ReceiveBuffer[0x01]=0x62\s

== LogsStartAndEndOfEveryOperation
mask 2
opened = 0
write 1x = 0
close = 0
open = 0
open = 202
| CNuComEth::WriteEth -  START
| CNuComEth::WriteTCP -  START
| CNuComEth::WriteTCP -  END
| CNuComEth::WriteEth -  END
| CNuComEth::CloseEth -  START
| CNuComEth::CloseEth -  END
| CNuComEth::OpenEth -  START
| CNuComEth::OpenEth -  END
| CNuComEth::OpenEth -  START

== NoBufferOrNoLengthMovesNothing
opened = 0
moveNothing = 0 0 0 0 0
sizes =

== FailuresOfASendHaveTheirCodes
opened = 0
sends ok 0
write 1x = 211
> CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written
* CNuComEth::WriteTCP -  Write failed: no bytes send during writing operation\s
sizes
# A printer that takes nothing more: the second packet runs into its time-out, the third is not tried.
error 11
sends failed at 2
write 3000x = 212
* CNuComEth::WriteTCP -  Write failed: error system occurred during Write()
sizes = 1024 1024
written = 1024
systemError = 11
# No reconnection for anything but an abort.
connects = 1
limiting off
write 1x = 208
> CNuComEth::WriteEth -  Error socket: setsockoption() failed
read 64 = 208
> CNuComEth::ReadEth -  Error socket: setsockoption() failed

== FailuresOfAReadHaveTheirCodes
opened = 0
timeouts 5000 20 = 0
> CNuComEth::SetTimeoutEth Timeout values for ethernet communication setted to: [send timeout, receive timeout] = [5000 , 20 ]
read 64 = 214
> CNuComEth::ReadTCP -  Read failed: error system occurred during Read()
write 10s = 0
timeouts 5000 5000 = 0
gets 10s
finishes
read 64 = 213
> CNuComEth::ReadTCP -  Read failed: no bytes read during reading operation\s
# Printers drop idle connections. The first bytes after that used to vanish without any error.
write 7r = 0
accept
gets 7r

== ShortSendIsWarnedOfAndCounted
# A short send leaves a gap: the next packet starts a full packet further on. The count tells the caller.
opened = 0
mask 12
sends ok 24 at 2
write 1024a 1024b 10c = 0
written = 1058
gets 1024a 24b 10c
> CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written

== DiscardedInputDoesNotShiftLaterReplies
opened = 0
says late
read 1 = 0 l
discard
says R
read 64 = 0 R

== AbortedPacketIsSentAgainOnANewConnection
opened = 0
mask 12
sends reset at 2
write 1024a 1024b 952c = 0
accept
gets 1024b 952c
# The new socket has the send time-out too.
limits = 10000 5000 0
| CNuComEth::WriteTCP -  Bytes to send: 3000, packet byte used:1024
| CNuComEth::WriteTCP -  3000 bytes to write:
| CNuComEth::WriteTCP -  Socket connection aborted for inactivity: try to connect 3 times
| CNuComEth::WriteTCP -  Iteration #1\s
| CNuComEth::OpenEth -  TCP connect successful with 127.0.0.1\s

== ReconnectionWithoutTimeoutsIsRefused
opened = 0
sends aborted
receives aborted
limiting odd
write 1x = 208
read 64 = 208
> CNuComEth::ReadTCP -  Error socket: setsockoption() failed

== ThreeTriesAreMadeAndToldOfAndALaterCallFindsThePrinterAgain
opened = 0
mask 12
listens off
sends aborted at 1
write 1x = 216
connects = 4
| CNuComEth::WriteTCP -  Bytes to send: 1, packet byte used:1
| CNuComEth::WriteTCP -  1 bytes to write:
| CNuComEth::WriteTCP -  Socket connection aborted for inactivity: try to connect 3 times
| CNuComEth::WriteTCP -  Iteration #1\s
| CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket\s
| CNuComEth::WriteTCP -  Iteration #2\s
| CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket\s
| CNuComEth::WriteTCP -  Iteration #3\s
| CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket\s
| CNuComEth::WriteTCP -  Socket connection aborted. impossibile to restablish connection
| CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written
# A till prints again after its printer was switched off and on, without being restarted, and polling a dead printer
# costs one try in two seconds at most.
write 1x = 206
connects = 5
wait 1999
read 64 = 206
connects = 5
listens on
wait 1
write 4b = 0
connects = 6
accept
gets 4b

== ALostLinkIsForgottenByClosing
opened = 0
listens off
sends aborted at 1
write 1x = 216
close = 206
listens on
write 1x = 206
connects = 4

== EndlessAbortsEndTheTransfer
# A printer that accepts and resets over and over (one network stack out of memory did) must not hold the till.
opened = 0
sends aborted
write 1x = 216
connects = 4
receives aborted
read 64 = 216
connects = 8

== PrinterGivenUpWhileClosingIsNotWaitedForAgain
# Three tries of two seconds, for each of what a closing device still has to say, would be too much.
opened = 0
closing on
sends ok 3
write 5s = 0
written = 3
write 4m = 212
sizes = 5
closing off
sends aborted
connecting off
write 1x = 216
connects = 4
closing on
wait 5000
write 1x = 206
wait 5000
write 1x = 206
connects = 5

== ClosingDeviceMakesOneTryToReconnect
opened = 0
closing on
sends aborted
connecting off
write 1x = 216
write 1x = 206
connects = 2

== SocketThatWillNotCloseIsNotOpenedOver
opened = 0
sends aborted
shutting off
write 1x = 216
connects = 1
sends really
write 1x = 0
connects = 2
)story"
