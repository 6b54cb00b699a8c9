// talvin-search: one search of a position in this process, without the
// protocols. Prints the engine's own search output, then a summary line.
//   talvin-search [--depth N] [--time MS] [--post] [--uci] [--hash MB] [--egtb PATHS]
//                 [--no-nmp] [--no-lmp] [--no-futility] [--no-extensions] [FEN]
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <memory>

#include "board/board.h"
#include "egtb/EGTBProbe.h"
#include "search/localSearch.h"

int main(int argc, char** argv) {
    int depth = 8, timeMs = 100000000, hashMB = 32;
    bool post = false, uci = false, nmp = true, lmp = true, futility = true, extensions = true;
    const char* fen = nullptr;
    const char* egtbPath = nullptr;
    for (int i = 1; i < argc; i++) {
        const char* a = argv[i];
        if (!strcmp(a, "--depth") && i + 1 < argc) depth = atoi(argv[++i]);
        else if (!strcmp(a, "--time") && i + 1 < argc) timeMs = atoi(argv[++i]);
        else if (!strcmp(a, "--hash") && i + 1 < argc) hashMB = atoi(argv[++i]);
        else if (!strcmp(a, "--egtb") && i + 1 < argc) egtbPath = argv[++i];
        else if (!strcmp(a, "--post")) post = true;
        else if (!strcmp(a, "--uci")) uci = true;
        else if (!strcmp(a, "--no-nmp")) nmp = false;
        else if (!strcmp(a, "--no-lmp")) lmp = false;
        else if (!strcmp(a, "--no-futility")) futility = false;
        else if (!strcmp(a, "--no-extensions")) extensions = false;
        else if (a[0] == '-') {
            fprintf(stderr, "unknown option %s\n", a);
            return 2;
        } else fen = a;
    }
    board position;
    if (fen) position.setupPosition(fen);
    localSearch search(hashMB);
    sharedData& s = *search.shared;
    s.postFlag = post;
    s.outputMode = uci ? uciProtocol : xboardProtocol;
    s.enable_NMP = nmp;
    s.enable_LMP = lmp;
    s.enable_FUTPRUN = futility;
    s.enable_EXTENTIONS = extensions;
    std::unique_ptr<EGTBProbe> tables;
    if (egtbPath) {
        tables = std::make_unique<EGTBProbe>(egtbPath, 64, false);
        if (tables->probeLimit > 0) search.tree.tablebases = tables.get();
    }
    const localSearch::result r = search.run(position, depth - 1, timeMs);
    char text[10];
    moveToText(r.move, text);
    printf("result move=%s score=%d depth=%d nodes=%lld\n", text, r.score, r.depth, r.nodes);
    return 0;
}
