#ifndef TOOLS_CORVO_ARCHIVE_ORDEREDWORK_H
#define TOOLS_CORVO_ARCHIVE_ORDEREDWORK_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace corvo {

// Works on items with several threads and gives the results out in the order of the items, however
// long each takes. Of a stream of any length only a few items are held at a time.
template <class Item, class Result>
class OrderedWork {
 public:
  // What is done, and where: getting the items on a thread of its own, working on many, the rest
  // on the thread that runs this. What any of them throws ends the run, and leaves it.
  std::function<bool(Item&)> next;  // false: there are no more
  std::function<Result(const Item&)> work;
  std::function<void(Result&)> put;
  std::function<void()> tick;      // several times a second, when nothing else is to do
  std::function<bool()> mustStop;  // any thread. Once true, no more work is begun
  std::function<void()> stopNext;  // any thread: makes a `next` that waits return. May be none

  void Run(unsigned jobs);

 private:
  static constexpr std::size_t kWindowPerJob = 32;
  static constexpr std::chrono::milliseconds kTick{100};

  struct Slot {
    Item item;
    std::optional<Result> result;
    std::exception_ptr error;
    bool isDone = false;
  };

  // Ends and joins the threads, whatever happens.
  class Threads {
   public:
    explicit Threads(OrderedWork& work) : m_work(work) {}
    ~Threads() {
      m_work.Abandon();
      for (std::thread& thread : m_threads) thread.join();
    }
    template <class Body>
    void Start(Body body) {
      m_threads.emplace_back(body);
    }

   private:
    OrderedWork& m_work;
    std::vector<std::thread> m_threads;
  };

  using Lock = std::unique_lock<std::mutex>;

  bool IsStopping() const { return m_isAbandoned || mustStop(); }

  void Abandon() {
    if (stopNext) stopNext();
    const Lock lock(m_mutex);
    m_isAbandoned = true;
    m_changed.notify_all();
  }

  // Waits until something is as wanted, or the run stops.
  template <class Condition>
  bool Await(Lock& lock, Condition condition) {
    while (!condition() && !IsStopping()) m_changed.wait_for(lock, kTick);
    return !IsStopping();
  }

  void Feed(std::size_t window);
  void FeedAll(std::size_t window);
  void WorkOn(Slot& slot);
  void WorkOnAll();
  bool TakeFirst(Slot& slot);

  std::mutex m_mutex;  // guards all below
  std::condition_variable m_changed;
  std::deque<Slot> m_slots;  // in order; the first m_begun are worked on, or done
  std::size_t m_begun = 0;
  bool m_isFed = false;  // there are no more items
  bool m_isAbandoned = false;
  std::exception_ptr m_feedError;
};

template <class Item, class Result>
void OrderedWork<Item, Result>::FeedAll(std::size_t window) {
  for (Item item; next(item); item = Item()) {
    Lock lock(m_mutex);
    if (!Await(lock, [&] { return m_slots.size() < window; })) return;
    m_slots.push_back({std::move(item), {}, {}, false});
    m_changed.notify_all();
  }
}

template <class Item, class Result>
void OrderedWork<Item, Result>::Feed(std::size_t window) {
  std::exception_ptr error;
  try {
    FeedAll(window);
  } catch (const std::exception&) {
    error = std::current_exception();
  }
  const Lock lock(m_mutex);
  m_isFed = true;
  m_feedError = error;
  m_changed.notify_all();
}

template <class Item, class Result>
void OrderedWork<Item, Result>::WorkOn(Slot& slot) {
  try {
    slot.result = work(slot.item);
  } catch (const std::exception&) {
    slot.error = std::current_exception();
  }
}

// A slot stays where it is until it is done, and nobody else looks into it.
template <class Item, class Result>
void OrderedWork<Item, Result>::WorkOnAll() {
  Lock lock(m_mutex);
  while (Await(lock, [&] { return m_begun < m_slots.size() || m_isFed; })) {
    if (m_begun == m_slots.size()) return;
    Slot& slot = m_slots[m_begun++];
    lock.unlock();
    WorkOn(slot);
    lock.lock();
    slot.isDone = true;
    m_changed.notify_all();
  }
}

// Waits for the first item's result. False: there is none to come.
template <class Item, class Result>
bool OrderedWork<Item, Result>::TakeFirst(Slot& slot) {
  Lock lock(m_mutex);
  while (m_slots.empty() || !m_slots.front().isDone) {
    if (m_begun == 0 && (mustStop() || (m_isFed && m_slots.empty()))) return false;
    m_changed.wait_for(lock, kTick);
    lock.unlock();
    tick();
    lock.lock();
  }
  slot = std::move(m_slots.front());
  m_slots.pop_front();
  --m_begun;
  m_changed.notify_all();
  return true;
}

template <class Item, class Result>
void OrderedWork<Item, Result>::Run(unsigned jobs) {
  {
    Threads threads(*this);
    threads.Start([this, jobs] { Feed(kWindowPerJob * jobs); });
    for (unsigned i = 0; i < jobs; ++i) threads.Start([this] { WorkOnAll(); });
    Slot slot;
    while (TakeFirst(slot)) {
      if (slot.error) std::rethrow_exception(slot.error);
      put(*slot.result);
    }
  }
  if (m_feedError) std::rethrow_exception(m_feedError);
}

}  // namespace corvo

#endif
