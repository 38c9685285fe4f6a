// SPDX-License-Identifier: GPL-3.0-or-later

// What dropping eleven months of a year with a million connections costs, what making six hours of seconds coarser
// does, and what they cost those who append and read meanwhile. Usage: pruning_bench FILE, which must not exist yet.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/BusyYear.h"
#include "service/store/HistoryReader.h"
#include "service/store/Store.h"
#include "service/store/StoreBatch.h"

namespace {

using namespace service;
using namespace std::chrono;

constexpr Moment present{seconds(1'763'720'123)};

double toMs(steady_clock::duration duration) {
    return duration_cast<std::chrono::duration<double, std::milli>>(duration).count();
}

template <class Action>
double timeMs(Action action) {
    const auto start = steady_clock::now();
    action();
    return toMs(steady_clock::now() - start);
}

[[noreturn]] void giveUp(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

/** Every second of six hours. */
void writeSeconds(Store& store, BusyYear& year, Moment& now) {
    StoreBatch batch(store);
    for (const Moment end = now + hours(6); now < end; now += seconds(1)) {
        if (!batch.append(year.step(now, now + seconds(1), 0))) {
            giveUp(store.lastError());
        }
    }
    if (!batch.commit()) {
        giveUp(store.lastError());
    }
}

/** Asks for totals as a chart of the year does, all the time. */
class Chart {
  public:
    explicit Chart(const std::string& path) : m_Path(path), m_Thread([this] { run(); }) {}

    /** Ends the asking; the longest that a total took. */
    double longestMs() {
        m_Ends = true;
        m_Thread.join();
        return m_LongestMs;
    }

  private:
    void run() {
        std::string error;
        const auto reader = HistoryReader::open(m_Path, error);
        if (!reader) {
            giveUp(error);
        }
        for (int step = 0; !m_Ends; step = (step + 1) % 210) {
            const Moment moment = present - days(365) + hours(365 * 24 / 210 * step);
            m_LongestMs = std::max(m_LongestMs, timeMs([&] { reader->totalUpTo(step % 40, {}, moment); }));
            std::this_thread::sleep_for(microseconds(100));
        }
    }

    std::string m_Path;
    std::atomic<bool> m_Ends = false;
    double m_LongestMs = 0;
    std::thread m_Thread;
};

struct Figures {
    double workMs = 0;
    int steps = 0;
    double longestStepMs = 0;
    std::vector<double> appendDelaysMs;  ///< from the moment an append is due until it is written
    double longestTotalMs = 0;

    double longestAppendMs() const { return *std::ranges::max_element(appendDelaysMs); }
};

/** A small step after the other until `due`, as the writer's thread does it. */
void keepHouseUntil(steady_clock::time_point due, Store& store, Moment now, Figures& figures) {
    while (steady_clock::now() < due && !(store.isPruned() && store.isThinned(now))) {
        const double stepMs = timeMs([&] {
            if (!(store.isPruned() ? store.thin(now) : store.prune())) {
                giveUp(store.lastError());
            }
        });
        figures.workMs += stepMs;
        figures.longestStepMs = std::max(figures.longestStepMs, stepMs);
        ++figures.steps;
    }
    std::this_thread::sleep_until(due);
}

/** Appends a second's changes fifty times a second, `rounds` times and as long as the work takes. */
Figures measure(Store& store, BusyYear& year, const std::string& path, Moment& now, int rounds) {
    Figures figures;
    Chart chart(path);
    for (int round = 0; round < rounds || !store.isPruned() || !store.isThinned(now); ++round) {
        const auto due = steady_clock::now() + milliseconds(20);
        const LedgerChanges changes = year.step(now, now + seconds(1), 20);
        now += seconds(1);
        keepHouseUntil(due, store, now, figures);
        if (!store.append(changes)) {
            giveUp(store.lastError());
        }
        figures.appendDelaysMs.push_back(toMs(steady_clock::now() - due));
    }
    figures.longestTotalMs = chart.longestMs();
    return figures;
}

/** MB of the database and its log. */
double sizeOf(const std::string& path) {
    const auto bytes = std::filesystem::file_size(path) + std::filesystem::file_size(path + "-wal");
    return static_cast<double>(bytes) / 1e6;
}

void print(const Figures& during, const Figures& before) {
    std::printf("  longest step %.1f ms\n", during.longestStepMs);
    std::printf("  longest append: %.1f ms, %.1f times that without (%.1f)\n", during.longestAppendMs(),
                during.longestAppendMs() / before.longestAppendMs(), before.longestAppendMs());
    std::printf("  longest total: %.1f ms, %.1f times that without (%.1f)\n", during.longestTotalMs,
                during.longestTotalMs / before.longestTotalMs, before.longestTotalMs);
}

void run(const std::string& path) {
    std::string error;
    const auto store = Store::open(path, error);
    if (!store || !store->load(present)) {
        giveUp(error);
    }
    BusyYear year(present);
    if (!year.writeTo(*store)) {
        giveUp(store->lastError());
    }
    Moment now = present;
    const Figures before = measure(*store, year, path, now, 500);
    store->beginPruning(now, days(366));
    const Figures idle = measure(*store, year, path, now, 0);
    const double sizeBefore = sizeOf(path);
    store->beginPruning(now, days(30));
    const Figures during = measure(*store, year, path, now, 0);
    std::printf("nothing to drop: %.1f ms in %d steps\n", idle.workMs, idle.steps);
    std::printf("eleven months: %.1f s in %d steps, %.0f MB before, %.0f after\n", during.workMs / 1000,
                during.steps, sizeBefore, sizeOf(path));
    print(during, before);
    writeSeconds(*store, year, now);
    const Figures thinning = measure(*store, year, path, now, 0);
    std::printf("six hours of seconds: %.1f s in %d steps\n", thinning.workMs / 1000, thinning.steps);
    print(thinning, before);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: pruning_bench FILE\n");
        return 2;
    }
    run(argv[1]);
    return 0;
}
