// All that the library asks of an operating system. Every method may be called from the host's
// thread and from the transmit thread; none throws. Win32, posix and the simulated platform
// implement it, and the library cannot tell them apart. Method names avoid the macros of the
// Windows headers.
#ifndef QRN_PLATFORM_PLATFORM_H_
#define QRN_PLATFORM_PLATFORM_H_

#include <cstdint>

namespace qrn {

using DeviceHandle = std::uintptr_t;  // an open device path; 0 = none
using ThreadHandle = std::uintptr_t;  // a started thread; 0 = none
using UsbList = std::uintptr_t;       // a snapshot of the present USB device interfaces; 0 = none

struct LocalTime {
  std::uint16_t year;  // four digits
  std::uint16_t month, day, hour, minute, second;
};

enum class UsbPathStatus {
  kPath,        // *path is the device path of this interface
  kUnreadable,  // the interface exists, its details cannot be read; go on with the next index
  kEnd,         // no interface has this index
};

// A run of bytes and where in a file it belongs.
struct FilePart {
  std::uint32_t place;  // offset of the first byte
  const char* bytes;
  std::uint32_t count;
};

enum class FileWrite {
  kWritten,
  kShort,   // the file ends too far before the place; nothing was written
  kFailed,  // it cannot be opened or written
};

class Platform {
 public:
  virtual ~Platform() = default;

  // The present interfaces of the system's USB device class, in the system's order. 0 when there is
  // no such list.
  virtual UsbList UsbListOpen() = 0;
  // *path stays valid until the next call on this list.
  virtual UsbPathStatus UsbListPath(UsbList list, std::uint32_t index, const char** path) = 0;
  virtual void UsbListClose(UsbList list) = 0;

  // Opens one path for exclusive, synchronous read and write. 0 when that fails.
  virtual DeviceHandle DeviceOpen(const char* path) = 0;
  virtual void DeviceClose(DeviceHandle device) = 0;
  // One bulk transfer; returns when the driver has completed it, however long that takes. On false,
  // LastError() says why. A read asks for one whole packet of `bytes` bytes.
  virtual bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) = 0;
  virtual bool BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) = 0;
  // Last error code of the calling thread, as the system numbers them. For log lines only.
  virtual std::uint32_t LastError() = 0;

  virtual std::uint32_t TickMs() = 0;  // since some fixed moment; wraps at 2^32
  virtual void SleepMs(std::uint32_t ms) = 0;
  virtual LocalTime LocalTimeNow() = 0;

  // Starts `procedure(argument)` on a new thread. 0 when that fails.
  virtual ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) = 0;
  virtual void ThreadRaisePriority(ThreadHandle thread) = 0;  // the highest normal level
  // Ends a thread by force. It is asked to leave and does so at its next sleep, transfer or box;
  // only one that is held in one of these for longer is stopped where it is. When this returns, it
  // executes no further step of the library. Release it afterwards.
  virtual void ThreadTerminate(ThreadHandle thread) = 0;
  // Waits until a thread that has done its work is gone, ends it by force if that takes too long,
  // and gives its handle back.
  virtual void ThreadRelease(ThreadHandle thread) = 0;

  virtual std::uint32_t SystemLocaleId() = 0;  // low byte 4 = Chinese
  // Modal box with one OK button and no owner; returns when the user has closed it. Texts are in
  // code page 936, which a Chinese Windows shows as they are and other systems convert.
  virtual void ShowBox(const char* text, const char* caption) = 0;
  virtual bool PathExists(const char* path) = 0;  // a file or a directory
  // Makes an empty file, or empties the one that is there.
  virtual bool FileCreate(const char* path) = 0;
  // Writes at a place of a file by one call of the system; nothing stays open, LastError() stays as
  // it is, and a file that is gone is created again. One that ends more than `gapMaxBytes` before
  // the place is left alone; *fileBytes then says where it ends.
  virtual FileWrite FileWriteAt(const char* path, const FilePart& part, std::uint32_t gapMaxBytes,
                                std::uint32_t* fileBytes) = 0;
};

// The platform in use: the system's own unless another one was put in place.
Platform& ThePlatform();
// Puts another implementation in place (tests, the virtual printer); nullptr returns to the
// system's own. Only between jobs.
void UsePlatform(Platform* platform);
// The system's own implementation, from the one folder below platform/ that is compiled in.
Platform& SystemPlatform();

}  // namespace qrn

#endif  // QRN_PLATFORM_PLATFORM_H_
