// talvin-egtbbench: tablebase probes per second, Gaviota and Syzygy apart,
// over positions of every table in the directories: a first pass that reads
// the tables, and further passes over a set small enough to stay in the
// cache. With an EPD file, the search speed on its positions with tables off
// and on, each position searched both ways in turn: once with both kinds,
// once with Syzygy alone.
//   talvin-egtbbench GAVIOTA_DIR SYZYGY_DIR [EPD [DEPTH]]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "egtb/EGTBProbe.h"
#include "search/localSearch.h"
#include "tablePositions.h"

namespace {

constexpr int positionsPerTable = 1000;
constexpr int cachedPerTable = 10;  // some 350 blocks: well within the 64 MB cache
constexpr int passes = 20;

double seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

double probeRate(const EGTBProbe& tables, const std::vector<board>& positions, int passCount) {
    const auto start = std::chrono::steady_clock::now();
    int score, answered = 0;
    for (int pass = 0; pass < passCount; pass++)
        for (const board& b : positions) answered += tables.DoEGTBProbe(b, score);
    return answered / seconds(start);
}

std::string letters(const int (&count)[5]) {
    std::string text;
    for (int type = 4; type >= 0; type--) text.append(count[type], "PNBRQ"[type]);
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: talvin-egtbbench GAVIOTA_DIR SYZYGY_DIR [EPD [DEPTH]]\n");
        return 2;
    }
    const board prototype;
    std::vector<board> positions, cached;
    for (const tableFile& file : tableFile::findAll({argv[1]})) {
        const std::vector<board> sample =
            sampleTablePositions(prototype, letters(file.count[0]), letters(file.count[1]), positionsPerTable,
                                 static_cast<uint32_t>(positions.size() + 1));
        positions.insert(positions.end(), sample.begin(), sample.end());
        cached.insert(cached.end(), sample.begin(), sample.begin() + cachedPerTable);
    }
    printf("%zu positions, %zu of them probed again and again\n", positions.size(), cached.size());
    for (const char* directory : {argv[1], argv[2]}) {
        const EGTBProbe tables(directory, 64, true);
        const double firstPass = probeRate(tables, positions, 1);
        probeRate(tables, cached, 1);  // brings the small set into the cache
        printf("%-8s %9.0f probes/s reading the tables, %9.0f from the cache\n",
               tables.gaviota.pieces ? "Gaviota" : "Syzygy", firstPass, probeRate(tables, cached, passes));
    }
    if (argc < 4) return 0;

    const int depth = argc > 4 ? std::atoi(argv[4]) : 12;
    std::vector<board> searched;
    std::ifstream in(argv[3]);
    for (std::string line; std::getline(in, line);)
        if (line.find('/') != std::string::npos && line[0] != '#') {
            searched.push_back(prototype);
            searched.back().setupPosition(line.substr(0, line.find(';')).c_str());
        }
    localSearch engine(64);
    for (const std::string& paths : {std::string(argv[1]) + ":" + argv[2], std::string(argv[2])}) {
        const EGTBProbe tables(paths.c_str(), 64, true);
        printf("\nsearch to depth %d, tables off / on (%s): nodes, ms, nodes per second\n", depth,
               tables.gaviota.pieces ? "Gaviota and Syzygy" : "Syzygy alone");
        std::vector<double> npsRatios, timeRatios;
        long long nodes[2] = {};
        double time[2] = {};
        for (const board& b : searched) {
            double nps[2], s[2];
            long long n[2];
            for (int on = 0; on < 2; on++) {
                engine.clearTables();
                engine.tree.tablebases = on ? &tables : nullptr;
                const auto start = std::chrono::steady_clock::now();
                n[on] = engine.run(b, depth - 1, 100000000).nodes;
                s[on] = seconds(start);
                nps[on] = n[on] / s[on];
                nodes[on] += n[on];
                time[on] += s[on];
            }
            npsRatios.push_back(nps[1] / nps[0]);
            timeRatios.push_back(s[1] / s[0]);
            printf("%10lld %7.0f %9.0f   %10lld %7.0f %9.0f\n", n[0], s[0] * 1000, nps[0], n[1], s[1] * 1000, nps[1]);
        }
        std::sort(npsRatios.begin(), npsRatios.end());
        std::sort(timeRatios.begin(), timeRatios.end());
        printf("total %lld nodes %.0f ms %.0f nodes/s off, %lld nodes %.0f ms %.0f nodes/s on\n", nodes[0],
               time[0] * 1000, nodes[0] / time[0], nodes[1], time[1] * 1000, nodes[1] / time[1]);
        printf("median on/off over %zu positions: nodes per second %.3f, time %.3f\n", npsRatios.size(),
               npsRatios[npsRatios.size() / 2], timeRatios[timeRatios.size() / 2]);
    }
    return 0;
}
