// Opening and closing the link of a remote source: the rotctl server for
// GPredict, the PstRotator client and the EasyComm line. Only the link of the
// selected source runs, and passing through the sources dialog closes every
// link and opens the selected one anew.
#pragma once

extern char own_address[32];         // the wired adapter's address, when found
extern char remote_adapter_hint[16]; // "eth"; tests name no adapter to stay on loopback

// Open the link of a remote source (24, 25 or 26) and say so on the status
// bar; any other source opens nothing.
void remote_start(int source);
// Close every link that is open, each with its status message.
void remote_stop(void);
// The same without a word on the panel, for the window's end.
void remote_shutdown(void);
// A service's row becomes the drive's target and the source buttons' text,
// but only while that row is the selected source: a link left open behind a
// source chosen from the menu fills its row and leaves the target alone.
void remote_hand_over(int source);
// Back to the start values: the services' own records, the adapter's address
// and the hint.
void remote_reset(void);
