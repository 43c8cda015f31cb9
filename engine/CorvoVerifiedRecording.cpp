// The exported entry points. The operations behind them catch everything; nothing is caught here.

#include "engine/CorvoVerifiedRecording.h"

extern "C" bool CreateSignature(const char* pszFileName, unsigned short wCodec,
                                long long* pStartTime, long long* pEndTime) {
  VerifyRecording engine;
  return engine.CreateSignature(pszFileName, wCodec, pStartTime, pEndTime);
}

extern "C" bool VerifySignature(const char* pszFileName) {
  VerifyRecording engine;
  return engine.VerifySignature(pszFileName);
}

extern "C" bool IsSignaturePresent(const char* pszFileName) {
  VerifyRecording engine;
  return engine.IsSignaturePresent(pszFileName);
}

extern "C" bool GetRecordingProperty(const char* pszFileName, char* pszProperties) {
  VerifyRecording engine;
  return engine.GetRecordingProperty(pszFileName, pszProperties);
}
