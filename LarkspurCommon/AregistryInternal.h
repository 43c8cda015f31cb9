#ifndef LARKSPURCOMMON_AREGISTRYINTERNAL_H
#define LARKSPURCOMMON_AREGISTRYINTERNAL_H

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/Boundary.h"
#include "platform/Win32Types.h"

// What the sources of VMRegistry share.

constexpr char kSource[] = "Aregistry";  // in exception reports

constexpr DWORD kTraceData = 0x000B0009;
constexpr DWORD kTraceNotice = 0x000B0005;
constexpr DWORD kTraceError = 0x000B0002;

// Key numbers, once the configuration is initialised.
constexpr int kMainKey = 1;
constexpr int kUserVariablesKey = 2;
constexpr int kVPIMKey = 3;

// What SyncMaster is told of.
constexpr int kSettingChanged = 1;
constexpr int kUserVariableChanged = 2;
constexpr int kSMTPMappingChanged = 3;
constexpr int kSettingDeleted = 4;
constexpr int kUserVariableDeleted = 5;
constexpr int kSMTPMappingsDeleted = 9;

constexpr DWORD kWorkBeforePause = 2;  // ms of a long loop's work between its pauses

template <class Value>
void VMRegistry::SetField(Value VMRegistry::*field, const Value& value) {
  const std::lock_guard<std::mutex> lock(m_fieldsMutex);
  if (this->*field != value) this->*field = value;
}

#endif
