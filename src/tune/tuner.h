#pragma once
#include "board/board.h"
#include "eval/evalWeights.h"
#include "parallel/sharedData.h"
#include "search/searchtree.h"

inline constexpr const char* resultsFileName = "!finalResults.txt";
inline constexpr const char* tuningLogFileName = "!output_settings.txt";

// The "tune" and "tunele" jobs of the search process: the evaluation weights
// measured against reference scores by searching every reference position
// to a fixed depth. "tune" moves one weight at a time by a small step and
// keeps a move only when the error shrinks; the weights in use change with
// it and are written to the weights file after every round.
class tuner {
public:
    // position is the board the reference positions are set up on; command
    // is the job's search command, whose withdrawal stops the run.
    tuner(sharedData& shared, searchtree& tree, board& position, int command);
    virtual ~tuner() = default;

    // Root-mean-square difference between the search scores (clamped to
    // ±1600) and the reference scores; lower is better.
    float calculateConcordance(int depth);
    void tune();
    void tuneLE();
    // One round over all weights at a depth; true when a weight moved.
    bool tuneRound(int pass, int depth, float& base);

    // Set when the front end withdrew the job or the engine is ending, or
    // when there is nothing to measure; the run then ends at once.
    bool stopped = false;
    int skipCounters[evalWeightCount] = {};

protected:
    // The error of the weights as they stand, on the tables as the searches
    // before left them (the evaluation cache's keys carry the weights).
    virtual float measure(int depth) { return calculateConcordance(depth); }

private:
    sharedData& shared;
    searchtree& tree;
    board& position;
    int command;

    bool stopRequested() const;
    void setWeight(int index, int value);
    void logParameters(int round, float base);
};

// Blank lines of the reference file (and of "speed"'s file, which has its
// format) are no positions.
bool isBlankLine(const char* line);

// Weight i moves by |value / 25|, at least 1.
inline int tuningStep(int value) {
    const int step = value / 25;
    return step == 0 ? 1 : (step < 0 ? -step : step);
}
