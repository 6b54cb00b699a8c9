#include "search/searchtree.h"

searchtree::searchtree(sharedData* shared, hashtable* table, int processSlot, bool printInvertedScore)
    : shared(shared), table(table), processSlot(processSlot), printInvertedScore(printInvertedScore) {}
