// The fax servers: which product an address belongs to, and its mail domain.

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/Pacing.h"

namespace {

constexpr DWORD kScanPause = 50;  // ms

struct FaxServers {
  std::list<tstring> names;
  std::list<tstring> domains;
};

// The domain of the first product whose name occurs in the address, in any letter case; null when
// none does.
const tstring* FindServer(const FaxServers& servers, const char* address) {
  const tstring lower = tstring(address).MakeLower();
  unsigned long clock = os_clock();
  auto domain = servers.domains.begin();
  for (const tstring& name : servers.names) {
    if (lower.Find(tstring(name).MakeLower()) >= 0) return &*domain;
    ++domain;
    PauseWhenDue(clock, kWorkBeforePause, kScanPause);
  }
  return nullptr;
}

}  // namespace

bool VMRegistry::GetFaxServerDomainName(const char* address, tstring& domain) const {
  const StoreSlot::Pointer store = m_faxServers.Get();
  if (address == nullptr || !store) return false;
  FaxServers servers;
  store->GetKeysAndValues(servers.names, servers.domains);
  const tstring* const found = FindServer(servers, address);
  if (found == nullptr || found->empty()) return false;
  domain = *found;
  return true;
}

bool VMRegistry::CheckIfFAXServerIsSupported(const char* address) const {
  const StoreSlot::Pointer store = m_faxServers.Get();
  if (address == nullptr || *address == '\0' || !store) return false;
  FaxServers servers;
  store->GetKeysAndValues(servers.names, servers.domains);
  return FindServer(servers, address) != nullptr;
}

unsigned VMRegistry::GetAllFAXServersSupported(tstring* names, unsigned count) const {
  if (names == nullptr) return 0;
  for (unsigned slot = 0; slot < count; ++slot) names[slot].clear();
  const StoreSlot::Pointer store = m_faxServers.Get();
  if (!store) return 0;
  std::list<tstring> products;
  store->GetKeys(products);
  unsigned used = 0;
  unsigned long clock = os_clock();
  for (const tstring& product : products) {
    if (used == count) break;
    names[used++] = product;
    PauseWhenDue(clock, kWorkBeforePause, kScanPause);
  }
  return used;
}
