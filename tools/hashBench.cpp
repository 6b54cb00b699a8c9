// talvin-hashbench: probes and stores per second of the transposition table
// and of the evaluation cache for the size settings 64 and 1024 (MB), with
// random keys in a single process.
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "eval/evalHashtable.h"
#include "search/hashtable.h"

namespace {

constexpr size_t keyCount = 4 * 1024 * 1024;
constexpr int passes = 4;

uint64_t splitmix(uint64_t& state) {
    uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

template <typename Body>
double millionPerSecond(Body&& body) {
    const auto start = std::chrono::steady_clock::now();
    for (int pass = 0; pass < passes; pass++) body(pass);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return static_cast<double>(keyCount) * passes / seconds.count() / 1e6;
}

}  // namespace

int main() {
    std::vector<uint64_t> keys(keyCount);
    uint64_t state = 1;
    for (uint64_t& key : keys) key = splitmix(state);
    const std::string instance = "HashBench-" + std::to_string(getpid());
    std::vector<std::string> lines;
    uint64_t sink = 0;

    for (int sizeMB : {64, 1024}) {
        char line[200];
        {
            hashtable table(instance.c_str(), sizeMB, false);
            if (!table.ready) return 1;
            const double stores = millionPerSecond([&](int pass) {
                for (size_t i = 0; i < keyCount; i++) {
                    const uint64_t key = keys[i];
                    table.recordHash(key, static_cast<int>(key >> 58) % 20, pass, static_cast<int16_t>(key >> 20),
                                     static_cast<int>(key >> 40) % 3, static_cast<int>(key & 0xFFFF));
                }
            });
            const double probes = millionPerSecond([&](int) {
                for (size_t i = 0; i < keyCount; i++) sink += table.probeHash(keys[i], 5, -100, 100);
            });
            snprintf(line, sizeof line, "hashtable     %5d MB  %9d entries  probes %6.1f M/s  stores %6.1f M/s  (%s)",
                     sizeMB, table.entryCount, probes, stores,
                     table.entryCount == hashtable::maskedEntryCount ? "mask" : "modulo");
            lines.push_back(line);
        }
        shm_unlink(("/sharedHashtable" + instance).c_str());
        {
            // The same setting gives the cache half the bytes (8-byte entries).
            evalHashtable cache(instance.c_str(), sizeMB, false);
            if (cache.entries == nullptr) return 1;
            cache.reset();  // touch every page before timing, as the table's constructor does
            const double stores = millionPerSecond([&](int) {
                for (size_t i = 0; i < keyCount; i++) cache.store(keys[i], static_cast<int16_t>(keys[i] >> 20));
            });
            const double probes = millionPerSecond([&](int) {
                for (size_t i = 0; i < keyCount; i++) sink += cache.probe(keys[i]);
            });
            snprintf(line, sizeof line, "evalHashtable %5d MB  %9d entries  probes %6.1f M/s  stores %6.1f M/s  (%s)",
                     cache.entryCount / 131072, cache.entryCount, probes, stores,
                     cache.entryCount == evalHashtable::defaultEntryCount ? "mask" : "modulo");
            lines.push_back(line);
        }
        shm_unlink(("/sharedEvalHashtable" + instance).c_str());
    }
    printf("%zu random keys, %d passes per figure\n", keyCount, passes);
    for (const std::string& line : lines) printf("%s\n", line.c_str());
    printf("checksum %llu\n", static_cast<unsigned long long>(sink));
    return 0;
}
