// The configuration of the process: its one object, its life, and its answers to the file layer.

#include "LarkspurCommon/Aregistry.h"

#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/FileLayerSettings.h"
#include "LarkspurCommon/Immortal.h"
#include "platform/HoldCancellation.h"

namespace {

constexpr char kReInit[] = "void VMRegistry::ReInitRegistry()";
constexpr char kDestructor[] = "VMRegistry::~VMRegistry()";

// m_global once its start has gone through, so that finding it takes no lock.
std::atomic<VMRegistry*> g_started{nullptr};

}  // namespace

VMRegistry* VMRegistry::m_global = nullptr;

// Never destroyed, as the object that it guards.
std::recursive_mutex& VMRegistry::StartMutex() {
  static Immortal<std::recursive_mutex> mutex;
  return *mutex;
}

VMRegistry* VMRegistry::global() {
  VMRegistry* const started = g_started.load(std::memory_order_acquire);
  return started != nullptr ? started : StartGlobal();
}

// A start that a host's service broke off is made again by the next caller.
VMRegistry* VMRegistry::StartGlobal() {
  const HoldCancellation hold;
  const std::lock_guard<std::recursive_mutex> lock(StartMutex());
  if (m_global == nullptr) m_global = new VMRegistry;
  if (!m_global->m_started) m_global->Init();
  if (m_global->m_started) g_started.store(m_global, std::memory_order_release);
  return m_global;
}

VMRegistry::VMRegistry() = default;

// A store goes with its last user.
VMRegistry::~VMRegistry() {
  const HoldCancellation hold;
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
