/* A complete host in one file: prints eight bars, one for each colour plane, through the line
 * family.
 *
 *   minimal_host
 *
 * Exit code 0: the printer has taken the page. 1: it has not; the user has been told in a message
 * box where there is something to do, the reason is in the job log. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "qrn_driver.h"

enum {
  kColors = 8,
  kWidth = 480, /* pixels: a multiple of 48, so that every mode prints all of them */
  kHeight = 360,
  kLineBytes = (kWidth * 2 + 31) / 32 * 4, /* 2 bits a pixel, whole words of 32 bits */
  kBarBytes = kWidth / kColors / 4         /* four pixels a byte */
};

/* The line of one plane: its own eighth of the width full of the largest drops. */
static void DrawLine(uint32_t color, uint8_t* line) {
  memset(line, 0, kLineBytes);
  memset(line + color * kBarBytes, 0xFF, kBarBytes);
}

/* 1 when every line was taken. */
static int SendPage(void) {
  uint8_t line[kLineBytes];
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t color = 0; color < kColors; ++color) {
      DrawLine(color, line);
      /* Blocks while the printer has no room. 0: the job is over, more lines would be dropped. */
      if (PP_SendALineAColorData(color, sizeof line, line, 0) != 1) return 0;
    }
  }
  return 1;
}

int main(void) {
  HostJobDesc desc;
  int printed;
  memset(&desc, 0, sizeof desc);
  desc.resX = PP_GetResolutionX(1); /* 1440 dpi */
  desc.resY = PP_GetResolutionY(0); /* 360 */
  desc.width = kWidth;
  desc.height = kHeight;
  desc.colors = kColors;
  desc.bitsPerPixel = 2;

  printed = PP_Init(&desc) == 1 && SendPage();
  PP_Uninit(); /* after a failed start, too */
  puts(printed ? "The printer has taken the page." : "The page was not printed.");
  return printed ? 0 : 1;
}
