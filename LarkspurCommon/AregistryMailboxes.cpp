// Mailbox counts in the form that has no count of unopened messages.

#include <arpa/inet.h>

#include <algorithm>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"

namespace {

constexpr char kStatistics[] =
    "void VMRegistry::QBXStatsFromMirador(VMailBox*, UWORD*, UWORD*, UWORD*, bool) const";

}  // namespace

void VMRegistry::QBXStatsFromMirador(unsigned short newCount, unsigned short unopened,
                                     unsigned short oldCount, unsigned short savedCount,
                                     unsigned short* outNew, unsigned short* outOld,
                                     unsigned short* outSaved, bool networkOrder) const {
  constexpr int kMost = 65535;
  const struct {
    char mapping;
    unsigned short count;
    unsigned short* out;
  } kinds[] = {{'N', newCount, outNew}, {'O', oldCount, outOld}, {'S', savedCount, outSaved}};
  for (const auto& kind : kinds) {
    const int added = kind.mapping == UnopenedMapping ? unopened : 0;
    const auto sum = static_cast<unsigned short>(std::min(kind.count + added, kMost));
    *kind.out = networkOrder ? htons(sum) : sum;
  }
}

void VMRegistry::QBXStatsFromMirador(VMailBox* box, unsigned short* outNew, unsigned short* outOld,
                                     unsigned short* outSaved, bool networkOrder) const {
  unsigned short newCount = 0, unopened = 0, oldCount = 0, savedCount = 0;
  AtBoundary({kSource, kStatistics, __LINE__}, [&] {
    if (!VMailBox::DoesMailboxStillExist(box)) return;
    VMailBox::Statistics(box, newCount, unopened, oldCount, savedCount);
  });
  QBXStatsFromMirador(newCount, unopened, oldCount, savedCount, outNew, outOld, outSaved,
                      networkOrder);
}
