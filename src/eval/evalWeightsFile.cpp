#include "eval/evalWeightsFile.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/console.h"
#include "settings/settingsFile.h"

bool writeEvalWeightsFile(const char* path, const evalWeightList& values) {
    FILE* file = std::fopen(path, "w");
    if (file == nullptr) return false;
    for (int i = 0; i < evalWeightCount; i++) std::fprintf(file, "%s=%d\n", evalWeightNames[i], values[i]);
    return std::fclose(file) == 0;
}

namespace {

int weightIndex(const char* name, size_t length) {
    for (int i = 0; i < evalWeightCount; i++)
        if (std::strlen(evalWeightNames[i]) == length && std::strncmp(evalWeightNames[i], name, length) == 0) return i;
    return -1;
}

// A whole line of optional sign and digits that fits an int.
bool readValue(const char* text, int& value) {
    char* end;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    while (*end == ' ' || *end == '\t' || *end == '\r' || *end == '\n') end++;
    if (end == text || *end != '\0' || errno == ERANGE || number < INT_MIN || number > INT_MAX) return false;
    value = static_cast<int>(number);
    return true;
}

}  // namespace

bool readEvalWeightsFile(const char* path, evalWeightList& values, std::string& error) {
    FILE* file = std::fopen(path, "r");
    if (file == nullptr) {
        error = "cannot be opened";
        return false;
    }
    evalWeightList read{};
    bool seen[evalWeightCount] = {};
    char line[1000];
    int lineNumber = 0;
    error.clear();
    while (error.empty() && std::fgets(line, sizeof line, file)) {
        lineNumber++;
        if (line[std::strspn(line, " \t\r\n")] == '\0') continue;
        const char* equals = std::strchr(line, '=');
        const int i = equals ? weightIndex(line, equals - line) : -1;
        int value = 0;
        if (i < 0 || seen[i] || !readValue(equals + 1, value)) {
            error = "line " + std::to_string(lineNumber) + " is not a new weight and its value";
            break;
        }
        seen[i] = true;
        read[i] = value;
    }
    std::fclose(file);
    for (int i = 0; i < evalWeightCount && error.empty(); i++)
        if (!seen[i]) error = std::string("no value for ") + evalWeightNames[i];
    if (!error.empty()) return false;
    values = read;
    return true;
}

void loadEvalWeightsSetting(bool report) {
    char path[1000];
    if (!readWeightsFileSetting(settingsFileName, path, sizeof path)) return;
    evalWeightList values;
    std::string error;
    if (readEvalWeightsFile(path, values, error)) setEvalWeights(values);
    else if (report) printInfo("Error (weights file): %s %s; the built-in weights stay\n", path, error.c_str());
}
