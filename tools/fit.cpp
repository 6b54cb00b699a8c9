// talvin-fit: fits the 80 evaluation weights to reference scores, fast
// enough for hundreds of thousands of positions (see evalFit.h).
//   talvin-fit [--holdout FILE] [--error cp|result] [--threads N] [--rounds N]
//              [--patience N] [--start WEIGHTS] [--only NAME,...] [--output FILE] FILE
// FILE and the hold-out FILE are in the tuner's reference format (FEN line,
// score line; tools/make-fit-data.sh makes both). Without --holdout every
// 10th position of FILE is held out. --error cp (default) is the tuner's
// error; result compares the expected game results the scores stand for, so
// that large scores count less. --only moves the weights named and no
// others. The weights of the lowest hold-out error are
// written, after every round that lowers it, to FILE (default
// fitted_weights.txt) in the format "pref:weights-file=" reads.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "eval/evalWeightsFile.h"
#include "evalFit.h"

namespace {

bool load(const char* path, std::vector<fitSample>& samples) {
    std::string error;
    if (readFitSamples(path, samples, error)) return true;
    fprintf(stderr, "talvin-fit: %s\n", error.c_str());
    return false;
}

// Weight names separated by commas, as the weights file writes them.
bool readNames(const char* text, std::vector<int>& indices) {
    std::string names = std::string(text) + ",";
    for (size_t start = 0, comma; (comma = names.find(',', start)) != std::string::npos; start = comma + 1) {
        const std::string name = names.substr(start, comma - start);
        const char* const* found = std::find(evalWeightNames, evalWeightNames + evalWeightCount, name);
        if (found == evalWeightNames + evalWeightCount) {
            fprintf(stderr, "talvin-fit: no weight is called %s\n", name.c_str());
            return false;
        }
        indices.push_back(int(found - evalWeightNames));
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const char* holdOutPath = nullptr;
    const char* startPath = nullptr;
    const char* output = "fitted_weights.txt";
    const char* path = nullptr;
    std::vector<int> only;
    fitErrorKind kind = fitErrorKind::centipawns;
    int threads = 2, rounds = 100, patience = 2;
    bool usage = false;
    for (int i = 1; i < argc && !usage; i++) {
        const char* a = argv[i];
        const bool hasValue = i + 1 < argc;
        if (!strcmp(a, "--holdout") && hasValue) holdOutPath = argv[++i];
        else if (!strcmp(a, "--error") && hasValue) {
            const char* name = argv[++i];
            usage = strcmp(name, "cp") != 0 && strcmp(name, "result") != 0;
            kind = strcmp(name, "result") == 0 ? fitErrorKind::expectedScore : fitErrorKind::centipawns;
        } else if (!strcmp(a, "--threads") && hasValue) threads = atoi(argv[++i]);
        else if (!strcmp(a, "--rounds") && hasValue) rounds = atoi(argv[++i]);
        else if (!strcmp(a, "--patience") && hasValue) patience = atoi(argv[++i]);
        else if (!strcmp(a, "--start") && hasValue) startPath = argv[++i];
        else if (!strcmp(a, "--output") && hasValue) output = argv[++i];
        else if (!strcmp(a, "--only") && hasValue) usage = !readNames(argv[++i], only);
        else if (a[0] != '-' && !path) path = a;
        else usage = true;
    }
    if (usage || !path) {
        fprintf(stderr,
                "usage: talvin-fit [--holdout FILE] [--error cp|result] [--threads N] [--rounds N] [--patience N] "
                "[--start WEIGHTS] [--only NAME,...] [--output FILE] FILE\n");
        return 2;
    }
    if (startPath) {
        evalWeightList start;
        std::string error;
        if (!readEvalWeightsFile(startPath, start, error)) {
            fprintf(stderr, "talvin-fit: %s %s\n", startPath, error.c_str());
            return 2;
        }
        setEvalWeights(start);
    }
    std::vector<fitSample> fitSet, holdOut;
    if (!load(path, fitSet) || (holdOutPath && !load(holdOutPath, holdOut))) return 2;
    if (!holdOutPath) {
        std::vector<fitSample> kept;
        for (size_t i = 0; i < fitSet.size(); i++) (i % 10 == 9 ? holdOut : kept).push_back(fitSet[i]);
        fitSet.swap(kept);
    }
    printf("%zu fit and %zu hold-out positions, %d threads\n", fitSet.size(), holdOut.size(), threads);
    const evalWeightList start = evalWeights;
    evalFit fit(std::move(fitSet), std::move(holdOut), kind, threads);
    if (!only.empty()) fit.fitOnly(only);
    const auto started = std::chrono::steady_clock::now();
    const evalWeightList best = fit.run(rounds, patience, [&](const evalFit::round& r) {
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        printf("round %d: fit %.4f hold-out %.4f, %d weights moved%s, %.0f s\n", r.number, r.fitError, r.holdOutError,
               r.changes, r.best ? " (best)" : "", seconds);
        fflush(stdout);
        if (r.best && !writeEvalWeightsFile(output, evalWeights))
            fprintf(stderr, "talvin-fit: cannot write %s\n", output);
    });
    std::vector<int> order;
    for (int i = 0; i < evalWeightCount; i++)
        if (best[i] != start[i]) order.push_back(i);
    std::sort(order.begin(), order.end(),
              [&](int a, int b) { return std::abs(best[a] - start[a]) > std::abs(best[b] - start[b]); });
    printf("%zu weights moved, largest moves first:\n", order.size());
    for (int i : order) printf("  %s %d -> %d\n", evalWeightNames[i], start[i], best[i]);
    return 0;
}
