#pragma once
#include <functional>
#include <string>
#include <vector>

#include "board/board.h"
#include "eval/evalWeights.h"

// A position of the fit with its reference score (centipawns, side to
// move's view, at most 1600 either way, as the tuner reads them).
struct fitSample {
    board position{board::uninitialised{}};
    int reference;
};

// Reads the tuner's reference format: a FEN line, then its score line ("+35").
bool readFitSamples(const char* path, std::vector<fitSample>& samples, std::string& error);

enum class fitErrorKind {
    centipawns,     // root-mean-square difference of the scores, capped at 1600, as the tuner's
    expectedScore,  // root-mean-square difference of the expected game results the scores stand for
};

// Fits the 80 evaluation weights to reference scores by moving one weight at
// a time, scoring with the static evaluation in this process on several
// threads (the positions are quiet, so no search is needed). The fit set
// moves the weights; after every round the error on the hold-out set, which
// the fit never sees, decides which weights are best and when to stop.
class evalFit {
public:
    struct round {
        int number;
        double fitError, holdOutError;
        int changes;  // weights moved in the round
        bool best;    // the lowest hold-out error so far
    };

    evalFit(std::vector<fitSample> fitSet, std::vector<fitSample> holdOut, fitErrorKind kind, int threads);

    // Only these weights move (all of them unless this is called).
    void fitOnly(const std::vector<int>& indices);

    // The error of the current weights on the fit set or the hold-out set.
    double fitError() { return error(fitSet); }
    double holdOutError() { return error(holdOut); }

    // Starts from the current weights and stops after maxRounds rounds, after
    // patience rounds that move weights without a new lowest hold-out error,
    // or when a round moves nothing and no step can shrink. Leaves the
    // weights of the lowest hold-out error in place and returns them.
    evalWeightList run(int maxRounds, int patience, const std::function<void(const round&)>& report);

private:
    std::vector<fitSample> fitSet, holdOut;
    fitErrorKind kind;
    int threads;
    bool fitted[evalWeightCount];

    double error(std::vector<fitSample>& samples);
    double sampleError(fitSample& sample) const;
};
