#pragma once
#include <string>

#include "eval/evalWeights.h"

// The weights as a text file of "name=value" lines, one per weight in list
// order: what "tune" leaves behind and "pref:weights-file=" loads.
inline constexpr const char* tunedWeightsFileName = "!tuned_weights.txt";

bool writeEvalWeightsFile(const char* path, const evalWeightList& values);

// Every weight exactly once, by name, in any order; blank lines are allowed.
// On failure error says why and values is left alone.
bool readEvalWeightsFile(const char* path, evalWeightList& values, std::string& error);

// Loads the file that the settings file names, if it names one. A file that
// cannot be used leaves the built-in weights and, when report is set, says so.
void loadEvalWeightsSetting(bool report);
