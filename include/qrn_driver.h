/* QRN_DriverT62804: what a host program calls to print on a large-format printer with one or two
 * piezo heads.
 *
 * A host uses one of two families of exports for a job; both drive the same job engine:
 *
 *   stream: StartPrint, then WriteRipData for slot 0..7 of line 0, slot 0..7 of line 1, ..., then
 *           EndRipData
 *   line:   PP_Init, then PP_SendALineAColorData for every colour of every line, colour 7 last,
 *           then PP_Uninit
 *
 * There is one job at a time in a process. Call all exports from one thread. A call that hands over
 * a line may block while the printer has no room; it returns when there is room or when the job is
 * stopping. Errors that the user must act on are shown by the library itself in a message box.
 *
 * A line holds one colour plane: 2 bits a pixel, four pixels a byte, the leftmost pixel in the two
 * highest bits; 0 = no ink, 1..3 = drop level. Its length is at most ((width * 2 + 31) / 32) * 4
 * bytes; what is longer is cut. Of the width only whole groups of 48 pixels are certain to be
 * printed in every mode, so pad lines to a multiple of 48.
 */
#ifndef QRN_DRIVER_H_
#define QRN_DRIVER_H_

#include <stdint.h>

#if defined(_WIN32) && !defined(_WIN64)
#define QRN_STDCALL __stdcall
#define QRN_CDECL __cdecl
#else
#define QRN_STDCALL
#define QRN_CDECL
#endif

#if !defined(_WIN32)
#define QRN_EXPORT __attribute__((visibility("default")))
#else
#define QRN_EXPORT /* the names are exported by the module definition file */
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The job description: 13 little-endian words of 32 bits. Reserved words are not read. */
typedef struct HostJobDesc {
  uint32_t reserved0;
  uint32_t resX; /* dots per inch along the carriage: 1080, 1440, 1620 or 2160; low 16 bits */
  uint32_t resY; /* lines per inch along the paper: 360; low 16 bits */
  uint32_t reserved3;
  uint32_t height; /* image height in lines */
  uint32_t width;  /* image width in pixels */
  uint32_t reserved6;
  uint32_t colors;       /* colour planes a line: 8; low 8 bits */
  uint32_t bitsPerPixel; /* 2 */
  uint32_t reserved9[4];
} HostJobDesc;

/* ---- Stream family ---- */

/* Does nothing. Returns 1. */
QRN_EXPORT int32_t QRN_STDCALL InitPrinter(uint32_t ignored);

/* Starts a job: finds the printer, asks for its parameters, announces the job. A null `desc` is a
 * job that no printer accepts. Always returns 1; a start that failed shows in a message box and in
 * the job log, and the lines that follow are dropped. Blocks until the printer has answered or was
 * given up; a printer that is not ready yet is asked again every 2 s without limit. */
QRN_EXPORT int32_t QRN_STDCALL StartPrint(const HostJobDesc* desc, uint32_t ignored);

/* Hands over the next colour plane line; slots 0..7 follow each other in a fixed cycle. `bytes`
 * counts the bytes at `line`. Always returns `bytes`, also when the line was dropped because the
 * job is stopping. */
QRN_EXPORT uint32_t QRN_STDCALL WriteRipData(const uint8_t* line, uint32_t bytes);

/* Flushes the image and ends the job; returns when the printer has taken everything or the job was
 * given up. Returns 1. */
QRN_EXPORT int32_t QRN_CDECL EndRipData(void);

/* Both do nothing, at any time. Return 1. */
QRN_EXPORT int32_t QRN_CDECL AbortPrint(void);
QRN_EXPORT int32_t QRN_CDECL ExitPrinter(void);

/* ---- Line family ---- */

/* Starts a job like StartPrint. Returns 1 when the printer has accepted it, 0 when not. Call
 * PP_Uninit either way. */
QRN_EXPORT int32_t QRN_STDCALL PP_Init(const HostJobDesc* desc);

/* Ends the job. A job whose last line has not arrived ends without what is left of its unfinished
 * band. Returns 1. */
QRN_EXPORT int32_t QRN_CDECL PP_Uninit(void);

/* Hands over the line of one colour plane, 0..7; plane 7 completes the line. Returns 1 when the
 * call was taken; 0 when the job is stopping, the colour is not below 8 or `line` is null. */
QRN_EXPORT int32_t QRN_STDCALL PP_SendALineAColorData(uint32_t color, uint32_t bytes,
                                                      const uint8_t* line, uint32_t ignored);

/* Copies "Undefine error!" with its zero, 16 bytes, to `text`. Returns 1. */
QRN_EXPORT int32_t QRN_STDCALL PP_GetErrorMsg(char* text);

/* Horizontal resolutions by index: 0..3 give 1080, 1440, 1620, 2160 (only the low 8 bits count);
 * others give 0. */
QRN_EXPORT uint32_t QRN_STDCALL PP_GetResolutionX(uint32_t index);

/* The vertical resolution, 360, whatever the argument. */
QRN_EXPORT uint32_t QRN_STDCALL PP_GetResolutionY(uint32_t ignored);

#ifdef __cplusplus
}
#endif

#endif /* QRN_DRIVER_H_ */
