// The threading layer: a pool of workers created on first use. A parallel
// region hands each worker its thread number; the caller is thread 0.
#include <sched.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "core.h"

namespace zar::core {
namespace {

int default_threads() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) == 0) {
    const int n = CPU_COUNT(&set);
    if (n > 0) return n;
  }
  const unsigned h = std::thread::hardware_concurrency();
  return h ? static_cast<int>(h) : 1;
}

thread_local bool in_region = false;

class pool {
 public:
  void run(int nt, const std::function<void(int, int)>& body) {
    std::unique_lock<std::mutex> region(region_m_);  // one region at a time
    grow(nt - 1);
    {
      std::lock_guard<std::mutex> lk(m_);
      body_ = &body;
      nt_ = nt;
      pending_ = nt - 1;
      ++generation_;
    }
    cv_.notify_all();
    in_region = true;
    body(0, nt);
    in_region = false;
    std::unique_lock<std::mutex> lk(m_);
    done_.wait(lk, [&] { return pending_ == 0; });
    body_ = nullptr;
  }

  ~pool() {
    {
      std::lock_guard<std::mutex> lk(m_);
      stop_ = true;
    }
    cv_.notify_all();
    for (auto& t : workers_) t.join();
  }

 private:
  void grow(int n) {
    while (static_cast<int>(workers_.size()) < n) {
      const int id = static_cast<int>(workers_.size()) + 1;
      workers_.emplace_back([this, id] { work(id); });
    }
  }

  void work(int id) {
    unsigned long seen = 0;
    in_region = true;
    for (;;) {
      const std::function<void(int, int)>* body;
      int nt;
      {
        std::unique_lock<std::mutex> lk(m_);
        cv_.wait(lk, [&] { return stop_ || generation_ != seen; });
        if (stop_) return;
        seen = generation_;
        body = body_;
        nt = nt_;
      }
      if (id < nt) {
        (*body)(id, nt);
        std::lock_guard<std::mutex> lk(m_);
        if (--pending_ == 0) done_.notify_one();
      }
    }
  }

  std::mutex region_m_, m_;
  std::condition_variable cv_, done_;
  std::vector<std::thread> workers_;
  const std::function<void(int, int)>* body_ = nullptr;
  int nt_ = 0, pending_ = 0;
  unsigned long generation_ = 0;
  bool stop_ = false;
};

pool& the_pool() {
  static pool p;
  return p;
}

}  // namespace

int max_threads() {
  const int n = config().threads;
  if (n > 0) return n;
  static const int d = default_threads();
  return d;
}

void parallel(int nt, const std::function<void(int, int)>& body) {
  if (nt <= 1 || in_region) {
    for (int t = 0; t < (nt < 1 ? 1 : nt); ++t) body(t, nt < 1 ? 1 : nt);
    return;
  }
  the_pool().run(nt, body);
}

}  // namespace zar::core

ZAR_API void zar_parallel(int nt, void (*fn)(int, int, void*), void* arg) {
  zar::core::parallel(nt < 1 ? zar::core::max_threads() : nt, [&](int t, int n) { fn(t, n, arg); });
}
