#include "tune/tuner.h"

#include <atomic>
#include <cmath>
#include <cstdio>

#include "eval/evalHashtable.h"
#include "eval/evalWeightsFile.h"
#include "game/timer.h"
#include "platform/console.h"
#include "settings/settingsFile.h"

namespace {

constexpr int referenceSearchMs = 30000;
constexpr int scoreLimit = 1600;
constexpr int deepestTuningDepth = 99;
constexpr int roundsPerPass = 100;
constexpr int deepestLEDepth = 15;

template <class... values>
void appendToLog(const char* format, values... v) {
    if (FILE* log = std::fopen(tuningLogFileName, "a")) {
        std::fprintf(log, format, v...);
        std::fclose(log);
    }
}

// "+123.9" reads 123, "-2500" reads -1600.
int referenceScore(const char* line) {
    int value = settingsDouble(line + 1);
    if (value > scoreLimit) value = scoreLimit;
    return line[0] == '-' ? -value : value;
}

}  // namespace

bool isBlankLine(const char* line) {
    for (; *line; line++)
        if (*line != ' ' && *line != '\t' && *line != '\r' && *line != '\n') return false;
    return true;
}

tuner::tuner(sharedData& shared, searchtree& tree, board& position, int command)
    : shared(shared), tree(tree), position(position), command(command) {}

// "?" zeroes the budget, like every stop.
bool tuner::stopRequested() const {
    return !shared.searchLoopRunFlag || shared.searchCommand != command || shared.timer1.allottedMs == 0;
}

void tuner::setWeight(int index, int value) {
    setEvalWeight(index, value);
    publishEvalWeights(shared.tunedWeights);
}

float tuner::calculateConcordance(int depth) {
    const int savedDepth = shared.maxDepth;
    shared.maxDepth = depth;
    int64_t sum = 0;
    int count = 0;
    if (FILE* file = std::fopen(resultsFileName, "r")) {
        char line[1000];
        while (!stopped && std::fgets(line, sizeof line, file)) {
            if (line[0] != '+' && line[0] != '-') {
                if (!isBlankLine(line)) position.setupPosition(line);
                continue;
            }
            shared.timer1.allottedMs = referenceSearchMs;
            shared.timer1.startTimer();
            // A stop that comes now zeroes the budget after it was set, or is seen here.
            std::atomic_thread_fence(std::memory_order_seq_cst);
            shared.rootBestScore = 0;  // what a position without a choice of moves counts as
            if (stopRequested() || (tree.rootSearch(position), stopRequested())) {
                stopped = true;
                break;
            }
            int score = static_cast<int16_t>(shared.rootBestScore);
            if (score > scoreLimit) score = scoreLimit;
            if (score < -scoreLimit) score = -scoreLimit;
            const int64_t difference = score - referenceScore(line);
            sum += difference * difference;
            count++;
        }
        std::fclose(file);
    }
    shared.maxDepth = savedDepth;
    if (stopped) return 0;
    if (count == 0) {
        printInfo("No reference scores in %s\n", resultsFileName);
        stopped = true;
        return 0;
    }
    return std::sqrt(static_cast<float>(sum / count));
}

void tuner::logParameters(int round, float base) {
    if (round == 0) appendToLog("Round 0: startScore=%f, params= ", base);
    else appendToLog("Round%d: startScore=%f, params= ", round, base);
    for (int value : evalWeights) appendToLog("%d, ", value);
    appendToLog("\n");
}

bool tuner::tuneRound(int pass, int depth, float& base) {
    bool changed = false;
    for (int i = 0; i < evalWeightCount && !stopped; i++) {
        if (pass == 0 && skipCounters[i] > 0) {
            printInfo("\nparam=%d; SKIP; baseScore=%f\n", i, base);
            continue;
        }
        const int value = evalWeights[i], step = tuningStep(value);
        printInfo("\nparam=%d; paramValue=%d; baseScore=%f\n", i, value, base);
        bool kept = false;
        for (const int trial : {value - step, value + step}) {
            setWeight(i, trial);
            const float score = measure(depth);
            if (stopped) break;
            printInfo(
                trial < value ? "param=%d; paramValue=%d; lowScore= %f\n" : "param=%d; paramValue=%d; highScore=%f\n",
                i, trial, score);
            if (score < base) {
                printInfo("new paramValue=%d\n", trial);
                skipCounters[i] = 0;
                base = score;
                kept = changed = true;
                break;
            }
        }
        if (kept) continue;
        if (!stopped) printInfo("remaining value=%d\n", value);
        skipCounters[i]++;
        setWeight(i, value);
    }
    return changed;
}

void tuner::tune() {
    float base = measure(1);
    if (stopped) return;
    logParameters(0, base);
    for (int depth = 1; depth <= deepestTuningDepth; depth++) {
        base = measure(depth);
        if (stopped) return;
        appendToLog("\n\n=== PLY:%d ===\nbaseScore=%f\n", depth, base);
        for (int pass = 0; pass < 2; pass++) {
            for (int& counter : skipCounters) counter = 0;
            base = measure(depth);
            bool changed = true;
            for (int round = 0; changed && round < roundsPerPass; round++) {
                changed = tuneRound(pass, depth, base);
                if (stopped) return;
                logParameters(round + 1, base);
                writeEvalWeightsFile(tunedWeightsFileName, evalWeights);
            }
        }
    }
}

void tuner::tuneLE() {
    appendToLog("\n\n");
    for (int depth = 1; depth <= deepestLEDepth; depth++) {
        printInfo("=== PLY:%d ===\n", depth);
        appendToLog("PLY:%d ", depth);
        tree.table->reset();
        if (board::evalCache) board::evalCache->reset();
        timer clock;
        clock.startTimer();
        const float concordance = calculateConcordance(depth);
        const int ms = clock.getTimePassedBy();
        if (stopped) return;
        printInfo("conc=%f time=%d ", concordance, ms);
        appendToLog("MARGIN=%d %d %f ", futilityMargin, ms, concordance);
        printInfo("\n");
        appendToLog("\n");
    }
}
