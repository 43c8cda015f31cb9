// The configuration of the process: its one object, its life, and its answers to the file layer.

#include "LarkspurCommon/Aregistry.h"

#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/FileLayerSettings.h"
#include "LarkspurCommon/Immortal.h"

namespace {

constexpr char kReInit[] = "void VMRegistry::ReInitRegistry()";
constexpr char kDestructor[] = "VMRegistry::~VMRegistry()";

// Held while the first call of global() initialises. The thread that does so takes it again when
// the file layer, from inside Init, asks for directories.
Immortal<std::recursive_mutex> g_creation;

std::atomic<VMRegistry*> g_initialised{nullptr};

VMRegistry* CreateGlobal() {
  const std::lock_guard<std::recursive_mutex> lock(*g_creation);
  if (VMRegistry::m_global == nullptr) {
    VMRegistry::m_global = new VMRegistry;
    VMRegistry::m_global->Init();
    g_initialised.store(VMRegistry::m_global, std::memory_order_release);
  }
  return VMRegistry::m_global;
}

}  // namespace

VMRegistry* VMRegistry::m_global = nullptr;

VMRegistry* VMRegistry::global() {
  VMRegistry* const initialised = g_initialised.load(std::memory_order_acquire);
  return initialised != nullptr ? initialised : CreateGlobal();
}

VMRegistry::VMRegistry() = default;

// A store goes with its last user.
VMRegistry::~VMRegistry() {
  m_mainKey = m_userVariablesKey = m_vpimKey = 0;
  for (StoreSlot* slot : {&m_settings, &m_userVariables, &m_faxServers, &m_smtpMappings}) {
    AtBoundary({kSource, kDestructor, __LINE__}, [&] { slot->Close(); });
  }
}

void VMRegistry::ReInitRegistry() {
  AtBoundary({kSource, kReInit, __LINE__}, [&] {
    Init();
    const AnsiString root = RegistryBaseDir();
    if (TBackupConfigContainer::global != nullptr) {
      TBackupConfigContainer::global->ReInit(root + "\\BackupConfig");
    }
    if (TClassOfServiceContainer::global != nullptr) {
      TClassOfServiceContainer::global->ReInit(root + "\\ClassOfService");
    }
  });
}

// Init replaces these texts while other threads open files.
tstring VMRegistry::Field(tstring VMRegistry::*field) const {
  const std::lock_guard<std::mutex> lock(m_fieldsMutex);
  return this->*field;
}

tstring VMRegistry::DBDirectory() const {
  return Field(&VMRegistry::DBDir);
}

tstring VMRegistry::LoggingDirectory() const {
  return Field(&VMRegistry::LoggingDir);
}

tstring VMRegistry::TempDirectory() const {
  return Field(&VMRegistry::TempFilesDir);
}

bool VMRegistry::LogFileErrorsToFile() const {
  bool log = false;
  GetRegistryEntry(settings::Row("LogFileErrorsToFile").name, log);
  return log;
}

tstring FileLayerTempDirectory() {
  return VMRegistry::global()->TempDirectory();
}

tstring FileLayerDatabaseDirectory() {
  return VMRegistry::global()->DBDirectory();
}

tstring FileLayerLoggingDirectory() {
  return VMRegistry::global()->LoggingDirectory();
}

bool FileLayerLogsErrorsToFile() {
  return VMRegistry::global()->LogFileErrorsToFile();
}
