#include "board/slidingMovesGenerator.h"

namespace {

// Found offline by a random search over sparse candidates with shift
// 64 - mask bits; each maps every occupancy subset of its mask so that two
// subsets only share a slot when their attack sets are equal. Constant
// initialised, so the static instance can be built before main without
// depending on any other initialiser.
constexpr uint64_t kRookMagics[64] = {
    0x0080001020400080ULL, 0x0040001000200040ULL, 0x2080088020001005ULL, 0x1200042008120040ULL, 0x828014008008000AULL,
    0x0500040002081300ULL, 0x04004408110A0090ULL, 0x4200002640830412ULL, 0x4800800020804000ULL, 0x0210400040201000ULL,
    0x0000802000100080ULL, 0x0020801000080081ULL, 0x0008800800040080ULL, 0x002200120028510CULL, 0x4203000D00020004ULL,
    0x004200004C021085ULL, 0x0080014000A00043ULL, 0x2810024020004000ULL, 0x9003410019002000ULL, 0x4000848010020800ULL,
    0x1004008008000480ULL, 0x0000280110402044ULL, 0x0200808001000200ULL, 0x0240420000408401ULL, 0x0480802080004002ULL,
    0x0040002020100802ULL, 0x1402410300200032ULL, 0x8000080080100080ULL, 0x0001000500080050ULL, 0x0002008080040002ULL,
    0x0494018400100208ULL, 0x8508802080005100ULL, 0x0041400866800080ULL, 0x0320400080802000ULL, 0x0000A00082801008ULL,
    0x0008008008801001ULL, 0x1004080011000500ULL, 0x0091C00408011060ULL, 0x0120900104000288ULL, 0x00B8009112001044ULL,
    0x0080004020004008ULL, 0x7040100800212000ULL, 0x0030002000808010ULL, 0x0041001000210008ULL, 0x0000040008008080ULL,
    0x6C11000400090002ULL, 0x0580040200010100ULL, 0x4800004885060004ULL, 0x0080004000200040ULL, 0x0000804000200080ULL,
    0x4020100082200480ULL, 0x0000880080500480ULL, 0x2401000800100500ULL, 0x0201000802040100ULL, 0x2100080190420400ULL,
    0x4048008041040200ULL, 0x0000800100204011ULL, 0x2140400820801103ULL, 0x00280A0010802042ULL, 0x4004201D01300089ULL,
    0x8216001008200402ULL, 0x180100421824004DULL, 0x0000184C90020104ULL, 0x2500010400508022ULL,
};

constexpr uint64_t kBishopMagics[64] = {
    0x0002020202020200ULL, 0x0002020202020000ULL, 0x0822080042840502ULL, 0x0914404280200000ULL, 0x0821104040022002ULL,
    0x20020282A0014030ULL, 0x0102011002120100ULL, 0x00AF14008A082000ULL, 0x8800089010408108ULL, 0x4002085800808610ULL,
    0x8100301444802430ULL, 0x0001044401822186ULL, 0x0080040420000402ULL, 0x0101320894042200ULL, 0x0020004404044021ULL,
    0x0010042411041084ULL, 0x002000C202240100ULL, 0x0002A02430020200ULL, 0x400100880A082202ULL, 0x0018040101410282ULL,
    0x0009004820083248ULL, 0x1002000100621200ULL, 0x0001000058221000ULL, 0x0200823500680200ULL, 0x0010080240880100ULL,
    0x4042200011040088ULL, 0x9100410210040281ULL, 0x000C080404010410ULL, 0x8001001003024000ULL, 0x80D000802D004100ULL,
    0x0008008420520840ULL, 0x8021202021008800ULL, 0x0402109009420200ULL, 0x8004022001820402ULL, 0x0304184800040800ULL,
    0x0020100820140400ULL, 0x0048020400001010ULL, 0x0202041040180804ULL, 0x208108008001040EULL, 0x0008089020088202ULL,
    0x001410A808040401ULL, 0x0006121004001200ULL, 0x10000A0082005000ULL, 0x0100204010490201ULL, 0x00B2012011000202ULL,
    0x066400A8060009C2ULL, 0x0010500248880040ULL, 0x0001011200800210ULL, 0x0005008230400000ULL, 0x0223104210040000ULL,
    0x09000314030C1008ULL, 0x1080802842020828ULL, 0x0008C1C008222080ULL, 0x00181020280AC60AULL, 0x300A509004810000ULL,
    0x020881081200401AULL, 0x8012211108014000ULL, 0x0012308401080220ULL, 0x0022000084008850ULL, 0x0114400804420220ULL,
    0x4000240090C20200ULL, 0x414080C242040100ULL, 0x0406088821580200ULL, 0x0110200D2100A108ULL,
};

// dx = +1 is one file towards the a-file (square + 1), dy = +1 one rank up (square + 8).
struct Direction {
    int dx, dy;
};

constexpr Direction kRookDirections[4] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
constexpr Direction kBishopDirections[4] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};

// Number of steps a ray can take from the square before it leaves the board.
int rayLength(int square, Direction d) {
    const int column = square % 8;  // 0 on the h-file
    const int row = square / 8;
    const int across = d.dx > 0 ? 7 - column : d.dx < 0 ? column : 8;
    const int along = d.dy > 0 ? 7 - row : d.dy < 0 ? row : 8;
    return across < along ? across : along;
}

uint64_t slidingAttacks(int square, uint64_t occupancy, const Direction* directions) {
    uint64_t result = 0;
    for (int r = 0; r < 4; ++r) {
        const Direction d = directions[r];
        const int step = 8 * d.dy + d.dx;
        const int length = rayLength(square, d);
        int target = square;
        for (int k = 0; k < length; ++k) {
            target += step;
            result |= 1ULL << target;
            if (occupancy & (1ULL << target)) break;
        }
    }
    return result;
}

// The last square of a ray never blocks anything beyond itself, so it is left
// out; that keeps the rook tables at 2^10..2^12 entries per square.
uint64_t relevantMask(int square, const Direction* directions) {
    uint64_t result = 0;
    for (int r = 0; r < 4; ++r) {
        const Direction d = directions[r];
        const int step = 8 * d.dy + d.dx;
        const int length = rayLength(square, d);
        for (int k = 1; k < length; ++k) result |= 1ULL << (square + k * step);
    }
    return result;
}

void buildTables(const Direction* directions, const uint64_t* magicSource, uint64_t* mask, uint64_t* magic,
                 int32_t* shift, int32_t* offset, uint64_t* attacks) {
    offset[0] = 0;
    for (int s = 0; s < 64; ++s) {
        mask[s] = relevantMask(s, directions);
        magic[s] = magicSource[s];

        int bits[12];
        int n = 0;
        for (int b = 0; b < 64; ++b)
            if (mask[s] & (1ULL << b)) bits[n++] = b;

        shift[s] = 64 - n;
        if (s < 63) offset[s + 1] = offset[s] + (1 << n);

        for (uint32_t i = 0; i < (1U << n); ++i) {
            uint64_t occupancy = 0;
            for (int j = 0; j < n; ++j)
                if (i & (1U << j)) occupancy |= 1ULL << bits[j];
            attacks[offset[s] + ((occupancy * magic[s]) >> shift[s])] = slidingAttacks(s, occupancy, directions);
        }
    }
}

}  // namespace

slidingMovesGenerator::slidingMovesGenerator() {
    buildTables(kRookDirections, kRookMagics, rookMask, rookMagic, rookShift, rookOffset, rookAttacks);
    buildTables(kBishopDirections, kBishopMagics, bishopMask, bishopMagic, bishopShift, bishopOffset, bishopAttacks);
}
