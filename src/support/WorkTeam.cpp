#include "support/WorkTeam.h"

#include <sched.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tidora {
namespace {

constexpr double kMillion = 1.0e6;
constexpr int kMostThreads = 1024;  ///< what somebody asks for by mistake shall not exhaust the system
constexpr std::chrono::milliseconds kCallEvery{50};

int UsableProcessors() noexcept {
    cpu_set_t usable;
    CPU_ZERO(&usable);
    if (sched_getaffinity(0, sizeof usable, &usable) == 0) {
        return std::max(1, CPU_COUNT(&usable));
    }
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

}  // namespace

WorkBoard::WorkBoard(std::size_t parts, ProgressCallback progress)
    : m_parts(parts), m_progress(std::move(progress)), m_owner(std::this_thread::get_id()) {}

bool WorkBoard::Take(std::size_t& part) noexcept {
    if (IsCancelled()) {
        return false;
    }
    part = m_next.fetch_add(1, std::memory_order_relaxed);
    return part < m_parts;
}

bool WorkBoard::Poll(double done) {
    if (done > 0.0) {
        m_doneMillionths.fetch_add(static_cast<std::size_t>(done * kMillion), std::memory_order_relaxed);
    }
    if (m_progress && std::this_thread::get_id() == m_owner && !IsCancelled()) {
        const Clock::time_point now = Clock::now();
        if (now - m_lastCall >= kCallEvery) {
            m_lastCall = now;
            const double all = kMillion * static_cast<double>(std::max<std::size_t>(m_parts, 1));
            const auto sum = static_cast<double>(m_doneMillionths.load(std::memory_order_relaxed));
            if (m_progress(std::min(1.0, sum / all))) {
                Cancel();
            }
        }
    }
    return IsCancelled();
}

int ThreadCount(int requested) noexcept {
    if (requested > 0) {
        return std::min(requested, kMostThreads);
    }
    // Nothing here changes the environment; a caller that does so meanwhile has to know.
    if (const char* const stated = std::getenv("OMP_NUM_THREADS")) {  // NOLINT(concurrency-mt-unsafe)
        const long count = std::strtol(stated, nullptr, 10);          // of a list, one number a level, the first
        if (count > 0) {
            return static_cast<int>(std::min<long>(count, kMostThreads));
        }
    }
    return UsableProcessors();
}

void RunTeam(int threads, WorkBoard& board, const std::function<void()>& work) {
    std::mutex mutex;
    std::condition_variable hasEnded;
    std::exception_ptr failure;
    int running = 0;
    const auto guarded = [&](const auto& call) {
        try {
            call();
        } catch (...) {
            board.Cancel();
            const std::lock_guard<std::mutex> lock(mutex);
            failure = failure ? failure : std::current_exception();
        }
    };
    const auto inThread = [&] {
        guarded(work);
        const std::lock_guard<std::mutex> lock(mutex);
        --running;
        hasEnded.notify_one();
    };
    guarded([&] { board.Poll(); });  // the callback is asked once whatever happens: others may do all the work
    std::vector<std::thread> others;
    try {
        others.reserve(static_cast<std::size_t>(std::max(0, threads - 1)));
        for (int n = 1; n < threads; ++n) {
            others.emplace_back(inThread);
            const std::lock_guard<std::mutex> lock(mutex);
            ++running;
        }
    } catch (const std::system_error&) {
        // The system has no more of them: those that are there do the work.
    } catch (...) {
        board.Cancel();
        const std::lock_guard<std::mutex> lock(mutex);
        failure = std::current_exception();
    }
    guarded(work);
    std::unique_lock<std::mutex> lock(mutex);
    while (!hasEnded.wait_for(lock, kCallEvery, [&running] { return running == 0; })) {
        lock.unlock();
        guarded([&] { board.Poll(); });  // no part is left for this thread, but its callback goes on being asked
        lock.lock();
    }
    lock.unlock();
    for (std::thread& other : others) {
        other.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace tidora
