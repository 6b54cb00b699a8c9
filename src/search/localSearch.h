#pragma once
#include <memory>

#include "parallel/sharedData.h"
#include "search/hashtable.h"
#include "search/searchtree.h"

// A search in this process alone, without the protocols and without other
// engine processes: for tools and tests. Every switch is on, as in a fresh
// settings file; change them in shared before searching.
class localSearch {
public:
    struct result {
        int move;
        int score;        // the last completed iteration's best score, side to move's view
        long long nodes;  // alphaBeta plus quiescence nodes
        int depth;        // last iteration started
    };

    std::unique_ptr<sharedData> shared;
    hashtable table;
    searchtree tree;

    explicit localSearch(int hashMB = 32);

    // Up to depthLimit iterations (depth limit + 1 plies at the root) or
    // until timeMs has passed.
    result run(const board& position, int depthLimit, int timeMs);
    void clearTables();
};
