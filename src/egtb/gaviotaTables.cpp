#include "egtb/gaviotaTables.h"

#include <dlfcn.h>
#include <gtb-probe.h>

#include "egtb/tableCheck.h"

namespace {

// Share of the cache for win/draw/loss blocks, in 128ths: the search asks for distances.
constexpr int wdlFraction = 8;

using initFunction = char* (*)(int verbosity, int scheme, const char** paths);

// Fathom's library exports a tb_init too. It is linked first, so that its own
// calls of that name stay inside it; Gaviota's is taken from Gaviota's library.
initFunction gaviotaInit() {
    Dl_info library;
    void* gaviotaSymbol = dlsym(RTLD_DEFAULT, "tb_probe_hard");
    if (gaviotaSymbol == nullptr || dladdr(gaviotaSymbol, &library) == 0) return nullptr;
    void* handle = dlopen(library.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) return nullptr;
    const auto init = reinterpret_cast<initFunction>(dlsym(handle, "tb_init"));
    dlclose(handle);
    return init;
}

}  // namespace

gaviotaTables::~gaviotaTables() {
    if (!started) return;
    tbcache_done();
    tb_done();
    tbpaths_done(paths);
}

bool gaviotaTables::start(const std::vector<std::string>& directories, const std::vector<tableFile>& files,
                          int cacheMB) {
    int schemeFiles[5] = {};
    for (const tableFile& file : files)
        if (file.type == tableFile::gaviota) schemeFiles[file.scheme]++;
    int scheme = tb_CP4;
    for (int s = tb_UNCOMPRESSED; s <= tb_CP4; s++)
        if (schemeFiles[s] > schemeFiles[scheme]) scheme = s;

    const initFunction init = gaviotaInit();
    if (init == nullptr) return true;
    paths = tbpaths_init();
    for (const std::string& directory : directories) paths = tbpaths_add(paths, directory.c_str());
    init(0, scheme, paths);
    started = true;
    // The library turns the cache off when it cannot have the memory.
    if (cacheMB < 0 || !tbcache_init(static_cast<size_t>(cacheMB) << 20, wdlFraction) || !tbcache_is_on()) return false;

    const unsigned available = tb_availability();
    for (int n = 5; n >= 3 && pieces == 0; n--)
        if (available >> (2 * (n - 3)) & 1) pieces = n;

    std::vector<const tableFile*> checked;
    for (const tableFile& file : files)
        if (file.type == tableFile::gaviota && file.scheme == scheme) checked.push_back(&file);
    const std::vector<tableHealth> health = checkTables(static_cast<int>(checked.size()), [&](int i) {
        for (int variant = 0; variant < checkVariants; variant++) {
            unsigned info, plies;
            if (!probeFile(checked[i]->checkPosition(variant), info, plies) || info == tb_FORBID) return false;
        }
        return true;
    });
    for (size_t i = 0; i < checked.size(); i++) {
        if (health[i] == tableHealth::crashed) damaged.push_back(*checked[i]);
        if (health[i] == tableHealth::failed) unreadable.push_back(*checked[i]);
    }
    return true;
}

bool gaviotaTables::probe(const tablePosition& p, int& value) const {
    for (const std::vector<tableFile>* left : {&damaged, &unreadable})
        for (const tableFile& file : *left)
            if (file.holds(p)) return false;
    unsigned info, plies;
    if (!probeFile(p, info, plies) || (info != tb_DRAW && info != tb_WMATE && info != tb_BMATE)) return false;
    // A win is an odd number of plies away, a loss an even number.
    const int moves = static_cast<int>(plies + 1) / 2;
    if (info == tb_DRAW) value = 0;
    else if ((info == tb_WMATE) == p.whiteToMove) value = 32767 - moves;
    else value = -32766 + moves;
    return true;
}

bool gaviotaTables::probeFile(const tablePosition& p, unsigned& info, unsigned& plies) const {
    unsigned squares[2][8];
    unsigned char types[2][8];
    for (int side = 0; side < 2; side++) {
        int n = 0;
        for (int type = 0; type < 6; type++)
            for (uint64_t set = p.pieces[side][type]; set && n < 7; set &= set - 1) {
                squares[side][n] = static_cast<unsigned>(__builtin_ctzll(set));
                types[side][n++] = static_cast<unsigned char>(tb_PAWN + type);
            }
        squares[side][n] = tb_NOSQUARE;
        types[side][n] = tb_NOPIECE;
    }
    // The library's castling bits run the other way round.
    const unsigned castles = (p.castling & 1 ? tb_WOO : 0) | (p.castling & 2 ? tb_WOOO : 0) |
                             (p.castling & 4 ? tb_BOO : 0) | (p.castling & 8 ? tb_BOOO : 0);
    const unsigned enPassant = p.enPassant ? static_cast<unsigned>(p.enPassant) : static_cast<unsigned>(tb_NOSQUARE);
    return tb_probe_hard(p.whiteToMove ? tb_WHITE_TO_MOVE : tb_BLACK_TO_MOVE, enPassant, castles, squares[0],
                         squares[1], types[0], types[1], &info, &plies) != 0;
}
