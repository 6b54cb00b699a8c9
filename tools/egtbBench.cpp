// talvin-egtbbench: tablebase probes per second from the cache, Gaviota and
// Syzygy apart, over positions of every table in the directories; then the
// search speed on endgame positions with the tables on and off, each
// position searched both ways in turn.
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

constexpr int positionsPerTable = 2000;
constexpr int passes = 5;

double seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Probes per second over the positions, after one pass that fills the cache.
double probeRate(const EGTBProbe& tables, const std::vector<board>& positions, int& answered) {
    int score;
    answered = 0;
    for (const board& b : positions) answered += tables.DoEGTBProbe(b, score);
    const auto start = std::chrono::steady_clock::now();
    long long sink = 0;
    for (int pass = 0; pass < passes; pass++)
        for (const board& b : positions) sink += tables.DoEGTBProbe(b, score);
    return sink >= 0 ? static_cast<double>(positions.size()) * passes / seconds(start) : 0;
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
    std::vector<board> positions;
    std::vector<std::string> materials;
    for (const tableFile& file : tableFile::findAll({argv[1]})) {
        const std::string material = letters(file.count[0]) + "/" + letters(file.count[1]);
        if (std::find(materials.begin(), materials.end(), material) != materials.end()) continue;
        materials.push_back(material);
        for (const board& b : sampleTablePositions(prototype, letters(file.count[0]), letters(file.count[1]),
                                                   positionsPerTable, static_cast<uint32_t>(materials.size())))
            positions.push_back(b);
    }
    printf("%zu positions of %zu tables\n", positions.size(), materials.size());
    for (const char* directory : {argv[1], argv[2]}) {
        const EGTBProbe tables(directory, 64, true);
        int answered;
        const double rate = probeRate(tables, positions, answered);
        printf("%-8s %9.0f probes/s from the cache (%d of %zu answered)\n",
               tables.gaviota.pieces ? "Gaviota" : "Syzygy", rate, answered, positions.size());
    }
    if (argc < 4) return 0;

    const int depth = argc > 4 ? std::atoi(argv[4]) : 12;
    std::vector<std::string> fens;
    std::ifstream in(argv[3]);
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#') fens.push_back(line.substr(0, line.find(';')));
    printf("\nsearch to depth %d, tables off / on (both kinds), nodes per second:\n", depth);
    const EGTBProbe tables((std::string(argv[1]) + ":" + argv[2]).c_str(), 64, true);
    localSearch engine(64);
    std::vector<double> ratios;
    long long nodes[2] = {};
    double time[2] = {};
    for (const std::string& fen : fens) {
        board b = prototype;
        b.setupPosition(fen.c_str());
        double nps[2];
        for (int on = 0; on < 2; on++) {
            engine.clearTables();
            engine.tree.tablebases = on ? &tables : nullptr;
            const auto start = std::chrono::steady_clock::now();
            const localSearch::result r = engine.run(b, depth - 1, 100000000);
            const double s = seconds(start);
            nps[on] = r.nodes / s;
            nodes[on] += r.nodes;
            time[on] += s;
        }
        ratios.push_back(nps[1] / nps[0]);
        printf("%10.0f %10.0f  %s\n", nps[0], nps[1], fen.c_str());
    }
    std::sort(ratios.begin(), ratios.end());
    printf("total %10.0f %10.0f nodes/s; median on/off %.3f over %zu positions\n", nodes[0] / time[0],
           nodes[1] / time[1], ratios.empty() ? 0.0 : ratios[ratios.size() / 2], ratios.size());
    return 0;
}
