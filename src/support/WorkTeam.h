#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <thread>

namespace tidora {

/// Is told a fraction from 0 to 1 that never falls; true asks for an end of the work.
using ProgressCallback = std::function<bool(double)>;

/// What the threads of one piece of work know of each other: what to do next, and whether to go on. The parts of the
/// work count from 0.
class WorkBoard {
public:
    /// progress: may be empty; called by the thread that made this, never by another one.
    WorkBoard(std::size_t parts, ProgressCallback progress);

    /// Takes the next part. False when none is left, or the work is to end.
    [[nodiscard]] bool Take(std::size_t& part) noexcept;

    /// Asks the callback when it is the turn of that; to be called from every thread at least some times a second. True
    /// when the work is to end. done: parts, or a fraction of one, that this call adds to what is done.
    bool Poll(double done = 0.0);

    [[nodiscard]] bool IsCancelled() const noexcept { return m_isCancelled.load(std::memory_order_relaxed); }

    /// Ends the work without asking anybody: a thread has failed.
    void Cancel() noexcept { m_isCancelled.store(true, std::memory_order_relaxed); }

private:
    using Clock = std::chrono::steady_clock;

    std::size_t m_parts;
    ProgressCallback m_progress;
    std::atomic<std::size_t> m_next{0};
    std::atomic<std::size_t> m_doneMillionths{0};  ///< of a part, so that it can be added up
    std::atomic<bool> m_isCancelled{false};
    std::thread::id m_owner;  ///< the thread that made this
    Clock::time_point m_lastCall{};
};

/// How many threads a piece of work gets. requested: from 1 on; 0 stands for the first number in OMP_NUM_THREADS, or
/// without one as many as the process may use processors.
[[nodiscard]] int ThreadCount(int requested) noexcept;

/// Calls work() on `threads` threads at once, one of them the caller's, and returns when all have returned. Threads
/// that the system does not give are done without. The first exception of any of them cancels the others by way of
/// `board` and is thrown again here. Threads live as long as the call: a process that forks afterwards has none to
/// miss, and nothing is left to wait for.
void RunTeam(int threads, WorkBoard& board, const std::function<void()>& work);

}  // namespace tidora
