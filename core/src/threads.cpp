// The threading layer: a pool of workers created on first use. A parallel
// region hands each worker it claims a thread number; the caller is thread 0.
//
// Several application threads may run regions at once: each caller claims
// the workers that are idle (starting new ones up to the thread setting) and
// runs with those, down to its own thread alone, rather than waiting for
// another region to finish. A region always has the nt shares it was asked
// for; each thread taking part takes the next share not yet taken until
// none is left, so every share runs exactly once whatever the number of
// threads that took part.
//
// The pool lives on the heap and is never destroyed by a destructor that
// could wait for a region in flight:
// - fork: the child abandons its copy of the pool (its workers do not exist
//   there) and starts a fresh one on its next threaded call;
// - exit or unload: idle workers are told to stop and are joined; workers
//   still inside a region of another application thread are left alone, so
//   exit() never waits for them;
// - a worker that cannot be started (pthread_create fails, for example under
//   a process limit) means fewer threads, with one warning per process.
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
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
  const long h = sysconf(_SC_NPROCESSORS_ONLN);
  return h > 0 ? static_cast<int>(h) : 1;
}

thread_local bool in_region = false;

struct region {
  region_body body;
  int nt;
  int pending;  // claimed workers still inside the region
  std::atomic<int> next{0};
  std::condition_variable done;

  void take_shares() {
    for (int t = next.fetch_add(1); t < nt; t = next.fetch_add(1)) body(t, nt);
  }
};

class pool;
struct worker {
  pool* owner = nullptr;
  pthread_t thread{};
  region* job = nullptr;  // set by the claiming caller, cleared when done
  bool busy = false;  // claimed by a caller (from the claim until the job is done)
  bool stop = false;
  std::condition_variable wake;
};

std::atomic<bool> creation_warned{false};

class pool {
 public:
  // Runs the nt shares of body on up to nt threads.
  void run(int nt, region_body body) {
    worker* claimed[max_claim];
    int got = 0;
    region r{body, nt, 0, {0}, {}};
    {
      std::lock_guard<std::mutex> lk(m_);
      const int want = nt - 1 < max_claim ? nt - 1 : max_claim;
      if (!stopping_) {
        for (worker* w : workers_)
          if (got < want && !w->busy) claimed[got++] = w;
        while (got < want) {
          worker* w = start_worker();
          if (!w) break;
          claimed[got++] = w;
        }
      }
      r.pending = got;
      for (int i = 0; i < got; ++i) {
        worker* w = claimed[i];
        w->busy = true;
        w->job = &r;
        w->wake.notify_one();
      }
    }
    in_region = true;
    r.take_shares();
    in_region = false;
    std::unique_lock<std::mutex> lk(m_);
    r.done.wait(lk, [&] { return r.pending == 0; });
  }

  // Stops and joins the idle workers; leaves any inside a region alone.
  void shut_down() {
    std::vector<pthread_t> idle;
    {
      std::lock_guard<std::mutex> lk(m_);
      stopping_ = true;
      for (worker* w : workers_) {
        w->stop = true;
        if (!w->busy) {
          try {
            idle.push_back(w->thread);
          } catch (...) {
            pthread_detach(w->thread);
          }
        }
        w->wake.notify_one();
      }
    }
    for (pthread_t t : idle) pthread_join(t, nullptr);
  }

  // Held across fork by the prepare handler, so that the child's copy of
  // the pool is never caught half-updated.
  std::mutex& lock() { return m_; }

 private:
  static constexpr int max_claim = 1024;

  // Called with m_ held. Null when the thread setting is reached or the
  // system refuses another thread.
  worker* start_worker() {
    const int n = static_cast<int>(workers_.size());
    if (n >= limit_ || n >= max_threads() - 1) return nullptr;
    worker* w = new (std::nothrow) worker;
    if (!w) return nullptr;
    try {
      workers_.reserve(workers_.size() + 1);
    } catch (...) {
      delete w;
      return nullptr;
    }
    w->owner = this;
    w->busy = true;  // claimed by the caller starting it
    const int rc = pthread_create(&w->thread, nullptr, &pool::main_of, w);
    if (rc != 0) {
      delete w;
      limit_ = static_cast<int>(workers_.size());
      if (!creation_warned.exchange(true)) {
        config().warnings.fetch_add(1);
        std::fprintf(stderr,
                     "zar: warning: cannot start a worker thread (%s); continuing with %d thread%s per call\n",
                     std::strerror(rc), limit_ + 1, limit_ ? "s" : "");
        std::fflush(stderr);
      }
      return nullptr;
    }
    workers_.push_back(w);
    return w;
  }

  static void* main_of(void* arg);
  void work(worker* w) {
    in_region = true;
    std::unique_lock<std::mutex> lk(m_);
    for (;;) {
      w->wake.wait(lk, [&] { return w->job || w->stop; });
      if (!w->job) return;
      region* r = w->job;
      lk.unlock();
      r->take_shares();
      lk.lock();
      w->job = nullptr;
      w->busy = false;
      if (--r->pending == 0) r->done.notify_one();
    }
  }

  std::mutex m_;
  std::vector<worker*> workers_;
  int limit_ = 1 << 30;  // lowered to the number running when a start fails
  bool stopping_ = false;
};

// The process's pool; null until the first threaded call (and again in the
// child of a fork).
std::atomic<pool*> current{nullptr};
pool* the_pool() {
  pool* p = current.load(std::memory_order_acquire);
  if (p) return p;
  pool* fresh = new (std::nothrow) pool;
  if (!fresh) return nullptr;
  if (current.compare_exchange_strong(p, fresh)) return fresh;
  delete fresh;
  return p;
}

void* pool::main_of(void* arg) {
  worker* w = static_cast<worker*>(arg);
  w->owner->work(w);
  return nullptr;
}

// Fork: the forking thread holds the pool's lock while the process is
// copied. The child then forgets its copy (its workers are not there) and
// starts a new pool when it first needs one.
pool* forking = nullptr;
void before_fork() {
  forking = current.load();
  if (forking) forking->lock().lock();
  loader_before_fork();
}
void after_fork_parent() {
  loader_after_fork();
  if (forking) forking->lock().unlock();
  forking = nullptr;
}
void after_fork_child() {
  loader_after_fork();
  // The abandoned pool still names threads of the parent: never touch it
  // again beyond releasing the lock this thread took.
  if (forking) forking->lock().unlock();
  forking = nullptr;
  current.store(nullptr);
  in_region = false;
}

__attribute__((constructor)) void register_fork_handlers() {
  pthread_atfork(before_fork, after_fork_parent, after_fork_child);
}

// Unload or exit: stop the idle workers (a worker's code must not be
// unmapped under it); never wait for one that is computing.
__attribute__((destructor)) void stop_workers() {
  if (pool* p = current.load()) p->shut_down();
}

}  // namespace

int max_threads() {
  const int n = config().threads;
  if (n > 0) return n;
  static const int d = default_threads();
  return d;
}

void parallel(int nt, region_body body) {
  pool* p = nt > 1 && !in_region ? the_pool() : nullptr;
  if (!p) {
    for (int t = 0; t < (nt < 1 ? 1 : nt); ++t) body(t, nt < 1 ? 1 : nt);
    return;
  }
  p->run(nt, body);
}

}  // namespace zar::core

ZAR_API void zar_parallel(int nt, void (*fn)(int, int, void*), void* arg) {
  if (!fn) return;
  zar::core::parallel(nt < 1 ? zar::core::max_threads() : nt, [&](int t, int n) { fn(t, n, arg); });
}
