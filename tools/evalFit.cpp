#include "evalFit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

constexpr int scoreCap = 1600;
// Expected result 1 / (1 + 10^(-score / scale)): 100 centipawns are worth 64 %.
constexpr double expectedScoreScale = 400;
// Shift counts: past 8 the terms they shift are gone anyway.
constexpr int largestShift = 8;

bool isShift(int index) {
    return &evalWeights[index] == &noQueenShift || &evalWeights[index] == &noRookShift1 ||
           &evalWeights[index] == &noRookShift2;
}

double expectedScore(int score) { return 1 / (1 + std::pow(10.0, -score / expectedScoreScale)); }

}  // namespace

bool readFitSamples(const char* path, std::vector<fitSample>& samples, std::string& error) {
    FILE* file = std::fopen(path, "r");
    if (file == nullptr) {
        error = std::string(path) + " cannot be opened";
        return false;
    }
    const board prototype;
    board position = prototype;
    bool havePosition = false;
    char line[1000];
    while (std::fgets(line, sizeof line, file)) {
        if (line[0] == '+' || line[0] == '-') {
            if (!havePosition) continue;
            const int size = std::min(std::atoi(line + 1), scoreCap);
            samples.push_back({position, line[0] == '-' ? -size : size});
        } else if (line[std::strspn(line, " \t\r\n")] != '\0') {
            position = prototype;
            position.setupPosition(line);
            havePosition = true;
        }
    }
    std::fclose(file);
    if (samples.empty()) error = std::string(path) + " holds no scored position";
    return !samples.empty();
}

evalFit::evalFit(std::vector<fitSample> fitSet, std::vector<fitSample> holdOut, fitErrorKind kind, int threads)
    : fitSet(std::move(fitSet)), holdOut(std::move(holdOut)), kind(kind), threads(std::max(1, threads)) {
    std::fill(fitted, fitted + evalWeightCount, true);
}

void evalFit::fitOnly(const std::vector<int>& indices) {
    std::fill(fitted, fitted + evalWeightCount, false);
    for (int i : indices) fitted[i] = true;
}

double evalFit::sampleError(fitSample& sample) const {
    // The whole window: no lazy cut, so every term counts.
    const int score = std::clamp(sample.position.evaluate(-mateScore, mateScore), -scoreCap, scoreCap);
    if (kind == fitErrorKind::centipawns) return double(score - sample.reference) * (score - sample.reference);
    const double difference = expectedScore(score) - expectedScore(sample.reference);
    return difference * difference;
}

double evalFit::error(std::vector<fitSample>& samples) {
    if (samples.empty()) return 0;
    std::vector<double> sums(threads, 0.0);
    std::vector<std::thread> workers;
    const size_t share = (samples.size() + threads - 1) / threads;
    auto work = [&](int part) {
        const size_t end = std::min(samples.size(), (part + 1) * share);
        double sum = 0;
        for (size_t i = part * share; i < end; i++) sum += sampleError(samples[i]);
        sums[part] = sum;
    };
    for (int part = 1; part < threads; part++) workers.emplace_back(work, part);
    work(0);
    for (std::thread& worker : workers) worker.join();
    double sum = 0;
    for (double s : sums) sum += s;
    return std::sqrt(sum / samples.size());
}

evalWeightList evalFit::run(int maxRounds, int patience, const std::function<void(const round&)>& report) {
    // Each weight keeps its own step: it starts at an eighth of the weight,
    // grows while moves in one direction keep paying and halves when neither
    // direction does, down to 1.
    int step[evalWeightCount];
    for (int i = 0; i < evalWeightCount; i++) step[i] = std::max(1, std::abs(evalWeights[i]) / 8);
    double current = fitError();
    double bestHoldOut = holdOutError();
    evalWeightList best = evalWeights;
    report({0, current, bestHoldOut, 0, true});
    for (int number = 1, sinceBest = 0; number <= maxRounds && sinceBest < patience; number++) {
        int changes = 0;
        for (int i = 0; i < evalWeightCount; i++) {
            if (!fitted[i]) continue;
            const int lowest = isShift(i) ? 0 : -100000, highest = isShift(i) ? largestShift : 100000;
            bool moved = false;
            for (int direction : {1, -1}) {
                const int start = evalWeights[i];
                for (;;) {
                    const int value = std::clamp(evalWeights[i] + direction * step[i], lowest, highest);
                    if (value == evalWeights[i]) break;
                    const int before = evalWeights[i];
                    setEvalWeight(i, value);
                    const double e = fitError();
                    if (e >= current) {
                        setEvalWeight(i, before);
                        break;
                    }
                    current = e;
                    moved = true;
                    step[i] *= 2;
                }
                if (moved) {
                    step[i] = std::max(1, step[i] / 2);
                    changes += evalWeights[i] != start;
                    break;
                }
            }
            if (!moved) step[i] = std::max(1, step[i] / 2);
        }
        const double h = holdOutError();
        const bool isBest = h < bestHoldOut;
        if (isBest) {
            bestHoldOut = h;
            best = evalWeights;
            sinceBest = 0;
        } else if (changes > 0) {
            // A round that only made steps smaller says nothing new.
            sinceBest++;
        }
        report({number, current, h, changes, isBest});
        bool smallestSteps = true;
        for (int i = 0; i < evalWeightCount; i++) smallestSteps = smallestSteps && (!fitted[i] || step[i] == 1);
        if (changes == 0 && smallestSteps) break;
    }
    setEvalWeights(best);
    return best;
}
