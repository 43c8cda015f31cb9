#ifndef ENGINE_WAVEFORMAT_H
#define ENGINE_WAVEFORMAT_H

#include "platform/Win32Types.h"

// The common part of a "fmt " payload, in the order of the file.
struct FormatBlock {
  WORD tag;
  WORD channels;
  DWORD samplesPerSecond;
  DWORD averageBytesPerSecond;
  WORD blockAlign;
  WORD bitsPerSample;
};

constexpr WORD kTagPcm = 1;
constexpr WORD kTagG726 = 100;

// Bytes in the file.
constexpr DWORD kFormatBlockSize = 16;
constexpr DWORD kEyreSize = 8;
constexpr DWORD kFactSize = 4;

#endif
