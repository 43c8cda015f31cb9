// The inert versions of the host services, for hosts that supply none.

#include "platform/HostServices.h"

const char* CorvoSettingsDirectory() {
  return "/etc";
}

const char* CorvoReleaseMarker() {
  return "/opt/Tolva/KMR_release";
}

void ConsolePrint(unsigned long, const char*, ...) {
}

void SendTrap() {
}

ReleaseGCSHelper::ReleaseGCSHelper(const char*, int, bool, bool) {
}
ReleaseGCSHelper::~ReleaseGCSHelper() {
}

void SyncMaster::ConfigurationItemChanged(int, const char*, const char*) {
}

TBackupConfigContainer* TBackupConfigContainer::global = nullptr;
void TBackupConfigContainer::ReInit(const AnsiString&) {
}

TClassOfServiceContainer* TClassOfServiceContainer::global = nullptr;
void TClassOfServiceContainer::ReInit(const AnsiString&) {
}

bool VMailBox::DoesMailboxStillExist(VMailBox*) {
  return false;
}

void VMailBox::Statistics(VMailBox*, unsigned short&, unsigned short&, unsigned short&,
                          unsigned short&) {
}
