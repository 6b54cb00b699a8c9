#include "tune/epdRecord.h"

#include <cctype>
#include <cstring>
#include <sstream>

#include "board/san.h"

namespace {

std::string trim(const std::string& s) {
    const size_t begin = s.find_first_not_of(" \t\r\n"), end = s.find_last_not_of(" \t\r\n");
    return begin == std::string::npos ? "" : s.substr(begin, end - begin + 1);
}

bool isNumber(const std::string& s) { return !s.empty() && s.find_first_not_of("0123456789") == std::string::npos; }

// Eight ranks of eight squares, each side with exactly one king.
bool validPlacement(const std::string& placement) {
    int rank = 0, file = 0, whiteKings = 0, blackKings = 0;
    for (char c : placement) {
        if (c == '/') {
            if (file != 8) return false;
            rank++;
            file = 0;
        } else if (c >= '1' && c <= '8') {
            file += c - '0';
        } else if (c && std::strchr("pnbrqkPNBRQK", c)) {
            whiteKings += c == 'K';
            blackKings += c == 'k';
            file++;
        } else {
            return false;
        }
        if (file > 8) return false;
    }
    return rank == 7 && file == 8 && whiteKings == 1 && blackKings == 1;
}

// Operations split at semicolons that are not inside a quoted string.
std::vector<std::string> splitOperations(const std::string& text) {
    std::vector<std::string> operations(1);
    bool quoted = false;
    for (char c : text) {
        if (c == '"') quoted = !quoted;
        if (c == ';' && !quoted) operations.emplace_back();
        else operations.back() += c;
    }
    return operations;
}

// Check and mate marks or "e.p." written apart from their move.
bool isMoveSuffix(const std::string& token) {
    return token == "e.p." || token.find_first_not_of("+#!?") == std::string::npos;
}

bool readMoves(const std::string& operands, const board& position, std::vector<int>& moves, std::string& error) {
    std::istringstream tokens(operands);
    for (std::string san; tokens >> san;) {
        if (isMoveSuffix(san)) continue;
        // A text that fits more than one move ("am Ne5" with two knights) stands for all of them.
        uint16_t fitting[moveBufferSize];
        if (sanToMoves(position, san.c_str(), fitting) == 0) {
            error = san + " is not a legal move here";
            return false;
        }
        for (int i = 0; fitting[i]; i++) moves.push_back(fitting[i]);
    }
    return true;
}

}  // namespace

bool epdRecord::parse(const char* line, board& position, std::string& error) {
    std::istringstream in(line);
    std::string placement, side, castling, enPassant;
    if (!(in >> placement >> side >> castling >> enPassant)) {
        error = "fewer than four position fields";
        return false;
    }
    // Some suites run the clocks into a missing en-passant field ("-1 12").
    if (enPassant[0] == '-') enPassant.resize(1);
    const bool validEnPassant =
        enPassant == "-" || (enPassant.size() == 2 && enPassant[0] >= 'a' && enPassant[0] <= 'h' &&
                             (enPassant[1] == '3' || enPassant[1] == '6'));
    if (!validPlacement(placement) || (side != "w" && side != "b") ||
        (castling != "-" && castling.find_first_not_of("KQkq") != std::string::npos) || !validEnPassant) {
        error = "not a position";
        return false;
    }

    std::string rest, halfMoves = "0", moveNumber = "1";
    std::getline(in, rest);
    std::vector<std::string> operations = splitOperations(rest);
    std::vector<std::pair<std::string, std::string>> parsed;
    for (size_t i = 0; i < operations.size(); i++) {
        const std::string operation = trim(operations[i]);
        const std::string code = operation.substr(0, operation.find(' '));
        const std::string operands = trim(operation.substr(code.size()));
        if (i == 0 && isNumber(code)) {
            halfMoves = code;
            const std::string next = operands.substr(0, operands.find(' '));
            if (isNumber(next)) moveNumber = next;
        } else if (code == "hmvc" && isNumber(operands)) {
            halfMoves = operands;
        } else if (code == "fmvn" && isNumber(operands)) {
            moveNumber = operands;
        } else if (!code.empty()) {
            parsed.emplace_back(code, operands);
        }
    }
    fen = placement + " " + side + " " + castling + " " + enPassant + " " + halfMoves + " " + moveNumber;
    position.setupPosition(fen.c_str());
    if (position.underAttack(position.toMove == 1 ? position.bKingSq : position.wKingSq, -position.toMove)) {
        error = "the side not to move is in check";
        return false;
    }

    id.clear();
    bestText.clear();
    avoidText.clear();
    bestMoves.clear();
    avoidMoves.clear();
    for (const auto& [code, operands] : parsed) {
        if (code == "id") {
            id = operands;
            std::erase(id, '"');
        } else if (code == "bm" || code == "am") {
            const bool best = code == "bm";
            (best ? bestText : avoidText) = operands;
            if (!readMoves(operands, position, best ? bestMoves : avoidMoves, error)) {
                error = code + " " + error;
                return false;
            }
        }
    }
    return true;
}

bool epdRecord::solvedBy(int move) const {
    const auto among = [move](const std::vector<int>& moves) {
        for (int m : moves)
            if ((m & 0x7FFF) == (move & 0x7FFF)) return true;
        return false;
    };
    return (bestMoves.empty() || among(bestMoves)) && !among(avoidMoves);
}
