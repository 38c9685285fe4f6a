// SPDX-License-Identifier: GPL-3.0-or-later

// What a total up to a moment costs in a history of three months and in one of three years, beside what it costs where
// the bytes of each interval are kept and added up; and how large a year of series is.
// Usage: series_bench FOLDER, which must exist; files of some 250 MB are made in it.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "service/store/HistoryReader.h"
#include "service/store/Store.h"
#include "service/store/StoreBatch.h"
#include "service/store/columns/Columns.h"

namespace {

using namespace service;
using namespace std::chrono;

constexpr Moment present{hours(490'000)};
constexpr int applicationCount = 30;
constexpr int questionCount = 2'000;

[[noreturn]] void giveUp(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

/** Each application moves bytes in every other interval, over TCP and now and then over UDP. */
class Desktop {
  public:
    const LedgerChanges& move(Moment moment) {
        m_Changes.moment = moment;
        m_Changes.applications.clear();
        for (ApplicationRecord& application : m_Applications) {
            if (m_Random() % 2 == 0) {
                application.id = static_cast<ApplicationId>(1 + (&application - m_Applications.data()));
                application.path = "/usr/bin/application-" + std::to_string(application.id);
                const ByteCount moved{static_cast<int>(m_Random() % 10'000'000),
                                      static_cast<int>(m_Random() % 500'000)};
                const auto protocolClass = m_Random() % 4 == 0 ? ProtocolClass::Udp : ProtocolClass::Tcp;
                application.counters.add(protocolClass, moved, moved);
                m_Changes.totals.counters.add(protocolClass, moved, moved);
                m_Changes.applications.push_back(application);
            }
        }
        return m_Changes;
    }

  private:
    std::mt19937 m_Random{1};
    std::vector<ApplicationRecord> m_Applications{applicationCount};
    LedgerChanges m_Changes;
};

/** As fine as the store keeps it: hours, for 30 days minutes, for two days tens of seconds, for two hours seconds. */
void writeHistory(const std::string& path, days age) {
    std::string error;
    const auto store = Store::open(path, error);
    if (!store) {
        giveUp(error);
    }
    Desktop desktop;
    SeriesGrains grains;
    StoreBatch batch(*store);
    Moment moment = present - age;
    for (std::size_t level = seriesGrains.size(); level-- > 0;) {
        grains.until[level] = present - seriesGrains[level].age;
    }
    batch.setGrains(grains);
    while (moment < present && batch.append(desktop.move(moment))) {
        moment += grains.lengthAt(moment + seconds(1));
    }
    if (!batch.commit()) {
        giveUp(store->lastError());
    }
}

struct Question {
    std::optional<ApplicationId> application;
    Moment moment;
};

std::vector<Question> questions(days age) {
    std::mt19937 random(2);
    std::vector<Question> result;
    for (int i = 0; i < questionCount; ++i) {
        const auto id = static_cast<ApplicationId>(random() % (applicationCount + 1));
        const seconds back(random() % static_cast<unsigned>(duration_cast<seconds>(age).count()));
        result.push_back({id == 0 ? std::nullopt : std::optional(id), present - back});
    }
    return result;
}

template <class Answer>
double medianMs(const std::vector<Question>& asked, Answer answer) {
    std::vector<double> times;
    for (const Question& question : asked) {
        const auto start = steady_clock::now();
        answer(question);
        times.push_back(duration<double, std::milli>(steady_clock::now() - start).count());
    }
    std::ranges::nth_element(times, times.begin() + questionCount / 2);
    return times[questionCount / 2];
}

/** In all classes, as a chart asks: a seek for each. */
double medianTotalMs(const std::string& path, days age) {
    std::string error;
    const auto reader = HistoryReader::open(path, error);
    if (!reader) {
        giveUp(error);
    }
    const auto answer = [&](const Question& question) {
        return reader->totalUpTo(question.application, {}, question.moment);
    };
    medianMs(questions(age), answer);  // brings the pages into memory
    return medianMs(questions(age), answer);
}

/** The same history with what each interval moved, and its sum. */
double medianSumMs(const std::string& path, days age) {
    SQLite::Database database;
    if (!database.Open(path + ".sums", SQLite::OpenMode::ReadWriteCreate) ||
        !database.Execute(
            "ATTACH '" + path +
            "' AS history; CREATE TABLE moved (application INTEGER, class INTEGER, "
            "moment INTEGER, received INTEGER, sent INTEGER, PRIMARY KEY (application, class, moment)) "
            "WITHOUT ROWID; INSERT INTO moved SELECT application, class, moment, "
            "received - lag(received, 1, 0) OVER series, sent - lag(sent, 1, 0) OVER series "
            "FROM history.series WINDOW series AS (PARTITION BY application, class ORDER BY moment)")) {
        giveUp(database.GetLastError());
    }
    SQLite::Query sum(
        database,
        "SELECT sum(received), sum(sent) FROM moved WHERE application = ?1 AND class IN (0, 1, 2) "
        "AND moment <= ?2");
    return medianMs(questions(age), [&](const Question& question) {
        sum.BindAll(question.application.value_or(allApplications), toColumn(question.moment));
        sum.Step();
        sum.Reset();
    });
}

double megabytes(const std::string& path) {
    return static_cast<double>(std::filesystem::file_size(path)) / 1e6;
}

void run(const std::string& folder) {
    const days shorter(91);
    const days longer(3 * 365);
    std::vector<double> totals;
    std::vector<double> sizes;
    for (const days age : {shorter, longer}) {
        const std::string path = folder + "/series-" + std::to_string(age.count());
        writeHistory(path, age);
        totals.push_back(medianTotalMs(path, age));
        sizes.push_back(megabytes(path));
        const double sum = medianSumMs(path, age);
        std::printf(
            "total up to a moment in %4d days: %.4f ms (median), a plain sum %.3f ms, %.0f times that\n",
            static_cast<int>(age.count()), totals.back(), sum, sum / totals.back());
    }
    const double years = duration<double>(longer - shorter) / duration<double>(days(365));
    std::printf("three years take %.2f times as long as three months\n", totals[1] / totals[0]);
    std::printf("%d busy applications: %.1f MB a year of hours, and %.1f MB for the three months at hand\n",
                applicationCount, (sizes[1] - sizes[0]) / years, sizes[0]);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: series_bench FOLDER\n");
        return 2;
    }
    run(argv[1]);
    return 0;
}
