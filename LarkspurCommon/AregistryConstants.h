#ifndef LARKSPURCOMMON_AREGISTRYCONSTANTS_H
#define LARKSPURCOMMON_AREGISTRYCONSTANTS_H

#include "platform/Win32Types.h"

// The configuration's vocabulary. Times are in milliseconds where no unit is named.

constexpr DWORD DefaultCfgMaxTime = 120;      // seconds
constexpr DWORD DefaultMaxRecordTime = 3600;  // seconds
constexpr DWORD DefaultMinMessageLen = 3000;
constexpr DWORD DefaultQBXMinMessageLen = 0;
constexpr DWORD DefaultVBScriptTimeout = 90000;
constexpr DWORD DefaultMinimumPasswordLength = 2;
constexpr DWORD DefaultQBXMinimumPasswordLength = 0;
constexpr int DefaultOutcallingRetries = 5;
constexpr int DefaultOutcallDefaultRetryTime = 30;  // minutes

constexpr int DefaultFromPeakTimeHour = 9;
constexpr int DefaultFromPeakTimeMinute = 0;
constexpr int DefaultToPeakTimeHour = 17;
constexpr int DefaultToPeakTimeMinute = 30;
constexpr int DefaultFromPrimeTimeHour = 7;
constexpr int DefaultFromPrimeTimeMinute = 30;
constexpr int DefaultToPrimeTimeHour = 19;
constexpr int DefaultToPrimeTimeMinute = 30;

constexpr int IPTOS_DEFAULT_VALUE = 184;  // the IP type-of-service byte of Expedited Forwarding

// SNMP alarm thresholds: critical + 10 <= level, and level + 30 <= OK.
constexpr DWORD THRESHOLD_CRITICAL_MIN_DIFF = 10;
constexpr DWORD THRESHOLD_OK_MIN_DIFF = 30;

// Used by the host alone.
constexpr bool DefaultMiradorMode = false;
constexpr bool DefaultAdviceOnRecord = false;
constexpr bool DefaultSendViaSMTP = false;
constexpr bool DefaultDiskSpaceUnitMb = false;
constexpr bool DefaultFaxMailboxEchoEnabled = true;
constexpr bool DefaultKDLNFriendlyNameSupported = false;
constexpr bool DefaultKDLNWildCardSupport = false;

constexpr int COS_MAX_ID_LEN = 15;
constexpr int EMAIL_FROM = 1;
constexpr int EMAIL_SUBJECT = 2;
constexpr int EMAIL_SUBJECT_UNKNOWN_CALLER = 3;
constexpr int EMAIL_TEXT = 4;

constexpr int CMPRB_DEFAULT_FAILED_ATTEMPTS = 4;
constexpr int CMPRB_MIN_FAILED_ATTEMPTS = 4;
constexpr int CMPRB_MAX_FAILED_ATTEMPTS = 10;
constexpr DWORD CMPRB_TIMEOUT_FAILED_ACCOUNTS = 90000;
constexpr DWORD CMPRB_TIMEOUT_FAILED_LOGINS = 90000;
constexpr DWORD CMPRB_MIN_TIMEOUT_FAILED_LOGINS = 90000;
constexpr DWORD CMPRB_NO_TIMEOUT_FAILED_LOGINS = 0;
constexpr int CMVM_DEFAULT_FAILED_ATTEMPTS = 3;
constexpr DWORD CMVM_TIMEOUT_FAILED_LOGINS = 600000;

constexpr int NO_REC_OFFSET = 1;
constexpr int MAX_PIN_LENGTH = 9;
constexpr int MAX_CONF_ID_LENGTH = 15;
constexpr DWORD INTRO_TIMEOUT = 20000;
constexpr DWORD LOOPING_TIMEOUT = 5000;
constexpr int MAX_LOOPS_IN_TIMEOUT = 20;
constexpr int NUM_FREQUENCIES = 10;
constexpr int DEVIATIONS = 5;
constexpr int BUFFERLENGTH = 160;
constexpr int MAXCYCLE = 100;

namespace CorvoEventing {
constexpr int klMaxSubscriptionRequestTime = 600;
}

#endif
