// SlotWriter: compression's slot writes, made on a thread of their own in the order they come.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <thread>

#include "storage/file_links.h"

// Finding each pair's slot and writing the pair there wait on memory in
// different places, so the writes go to another thread and both wait at
// once. The caller checks each slot (addFile's errors stay on its thread);
// the writes keep their order, so the bytes are those of writing at once.
// Construction throws std::system_error when no thread can be started.
class SlotWriter {
 public:
  explicit SlotWriter(CFileLinks &fileLinks) : m_fileLinks(fileLinks) {
    m_thread = std::thread([this] { run(); });
  }
  ~SlotWriter() { finish(); }

  void add(uint32_t slot, uint32_t file, unsigned char count) {
    const size_t at = m_written;
    while (at - m_taken.load(std::memory_order_acquire) >= kRing) std::this_thread::yield();
    m_ring[at % kRing] = {slot, file, count};
    m_written = at + 1;
    if ((at + 1) % kBatch == 0) m_published.store(at + 1, std::memory_order_release);
  }
  void finish() {
    if (!m_thread.joinable()) return;
    m_published.store(m_written, std::memory_order_release);
    m_ended.store(true, std::memory_order_release);
    m_thread.join();
  }

 private:
  struct Pending {
    uint32_t slot;
    uint32_t file;
    unsigned char count;
  };
  static constexpr size_t kRing = 1 << 14;
  static constexpr size_t kBatch = 256;
  static constexpr size_t kAhead = 32;

  void run() {
    size_t done = 0;
    for (;;) {
      const bool ended = m_ended.load(std::memory_order_acquire);
      const size_t ready = m_published.load(std::memory_order_acquire);
      if (done == ready) {
        if (ended) return;
        // Finding slots is the slower side: a short sleep lets a batch gather.
        std::this_thread::sleep_for(std::chrono::microseconds(20));
        continue;
      }
      for (; done < ready; ++done) {
        if (done + kAhead < ready)
          __builtin_prefetch(m_fileLinks.entryAddress(m_ring[(done + kAhead) % kRing].slot), 1);
        const Pending &p = m_ring[done % kRing];
        m_fileLinks.putCheckedFile(p.slot, p.file, p.count);
        if ((done + 1) % kBatch == 0) m_taken.store(done + 1, std::memory_order_release);
      }
      m_taken.store(done, std::memory_order_release);
    }
  }

  CFileLinks &m_fileLinks;
  Pending m_ring[kRing];
  size_t m_written = 0;
  std::atomic<size_t> m_published{0};
  std::atomic<size_t> m_taken{0};
  std::atomic<bool> m_ended{false};
  std::thread m_thread;
};
