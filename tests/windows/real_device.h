// Plugs a virtual printer into the DLL and leaves everything else to the system: threads, their
// ends, sleeps, boxes and files are the real ones. Only the calls that reach a USB device are
// replaced, since there is none; a transfer waits as a driver does, in the kernel. The host's
// thread, which only waits, may be given a fast clock.
#ifndef QRN_TESTS_WINDOWS_REAL_DEVICE_H_
#define QRN_TESTS_WINDOWS_REAL_DEVICE_H_

#include <windows.h>

#include <cstdint>

#include "platform/usb_port.h"

// Once a loaded DLL. The calling thread is the host's; its sleeps and ticks are `speed` times as
// fast as the true ones.
void LeadDeviceCallsHere(HMODULE dll, std::uint32_t speed);
// What the next open finds; null: no printer.
void PlugIn(qrn::UsbPort* port);

// Calls of the DLL to TerminateThread so far.
int TerminatedThreads();
// True while a read has waited for so long that it is held in the kernel for good.
bool IsReadHeld();

#endif  // QRN_TESTS_WINDOWS_REAL_DEVICE_H_
