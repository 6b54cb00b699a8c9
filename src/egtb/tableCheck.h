#pragma once
#include <functional>
#include <vector>

enum class tableHealth { sound, failed, crashed };

// The probing libraries take their files on trust: a damaged one can bring
// the process down on its first probe. So every table is probed in a child
// process before the search may touch it; probe(i) says whether table i
// answered. A table whose probe ends the child is crashed, one that does not
// answer failed. Tables not reached within a few seconds (a slow disk, a
// hang) are taken as sound, so that nothing can hold up the start.
std::vector<tableHealth> checkTables(int count, const std::function<bool(int)>& probe);
