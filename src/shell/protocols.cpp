#include "shell/protocols.h"

#include <poll.h>

#include <cstdio>

#include "game/game.h"

bool readCommandLine(game& g, char* line) {
    // Standard input is unbuffered, so what poll sees is all there is.
    pollfd input{0, POLLIN, 0};
    while (poll(&input, 1, 250) == 0) g.watchSearchProcess();
    return fgets(line, lineBufferSize, stdin) != nullptr;
}
