#pragma once
#include <functional>

class board;
class searchProcess;
class searchtree;
struct sharedData;

// What the search process and every slave do first: open the mutexes, the
// evaluation cache, the shared record and the objects of a searching
// process, build a board and a search tree on them and say they are ready;
// then run works on them, and its result is the process's exit code (1
// without the shared record).
int runRoleProcess(int number, const std::function<int(sharedData&, searchProcess&, board&, searchtree&)>& run);
