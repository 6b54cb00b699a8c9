#include "bookGames.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "board/san.h"

namespace {

constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

bool isCoordinateMove(const std::string& token) {
    return token.size() >= 4 && token.size() <= 5 && token[0] >= 'a' && token[0] <= 'h' && token[1] >= '1' &&
           token[1] <= '8' && token[2] >= 'a' && token[2] <= 'h' && token[3] >= '1' && token[3] <= '8' &&
           (token.size() == 4 || std::strchr("qrbnQRBN", token[4]));
}

// Engine squares count h1 = 0; the books count a1 = 0.
int bookSquare(int engineSquare) { return 8 * (engineSquare / 8) + 7 - engineSquare % 8; }

class gameBuilder {
public:
    gameBuilder(const board& prototype, const std::function<void(const bookGame&)>& onGame,
                std::vector<std::string>& warnings)
        : position(prototype), onGame(onGame), warnings(warnings) {
        start(startFen);
    }

    int games = 0;

    void start(const std::string& fen) {
        game = bookGame{{}, "", unknownResult};
        position.setupPosition(fen.c_str());
        cut = false;
    }
    void setResult(gameResult result) { game.result = result; }
    void annotate(int annotation) {
        if (!game.plies.empty() && !cut) game.plies.back().annotation = annotation;
    }
    void move(std::string token) {
        if (cut) return;
        int annotation = 0;
        static const char* const glyphs[] = {"!!", "??", "!?", "?!", "!", "?"};
        static const int glyphCodes[] = {3, 4, 5, 6, 1, 2};
        for (int i = 0; i < 6; i++) {
            const size_t length = std::strlen(glyphs[i]);
            if (token.size() > length && token.compare(token.size() - length, length, glyphs[i]) == 0) {
                token.resize(token.size() - length);
                annotation = glyphCodes[i];
                break;
            }
        }
        const int move = isCoordinateMove(token) ? position.convertMovestringToInt(token.c_str())
                                                 : sanToMove(position, token.c_str());
        if (move == 0) {
            warnings.push_back("game " + std::to_string(games + 1) + ": no legal move " + token + " at ply " +
                               std::to_string(game.plies.size() + 1) + "; the game ends there");
            cut = true;
            return;
        }
        char fen[128];
        position.getFen(fen);
        game.plies.push_back(
            {fen, bookSquare(moveFrom(move)), bookSquare(moveTo(move)), "\0nbrq"[movePromotion(move)], annotation});
        position.makeMove(move);
    }
    void finish() {
        if (!game.plies.empty()) {
            char fen[128];
            position.getFen(fen);
            game.finalFen = fen;
            onGame(game);
            games++;
        }
        start(startFen);
    }
    bool hasMoves() const { return !game.plies.empty() || cut; }

private:
    board position;
    bookGame game;
    bool cut = false;
    const std::function<void(const bookGame&)>& onGame;
    std::vector<std::string>& warnings;
};

// The position after "[FEN " in a tag, or empty.
std::string fenTag(const std::string& tag) {
    if (tag.rfind("FEN ", 0) != 0) return "";
    const size_t open = tag.find('"'), close = tag.rfind('"');
    return open != std::string::npos && close > open ? tag.substr(open + 1, close - open - 1) : "";
}

}  // namespace

int readBookGames(const std::string& text, bool pgn, const board& prototype,
                  const std::function<void(const bookGame&)>& onGame, std::vector<std::string>& warnings) {
    gameBuilder builder(prototype, onGame, warnings);
    size_t i = 0;
    const size_t size = text.size();
    auto skipPast = [&](char end) {
        const size_t at = text.find(end, i);
        i = at == std::string::npos ? size : at + 1;
    };
    while (i < size) {
        const char c = text[i];
        if (c == '\n') {
            if (!pgn && builder.hasMoves()) builder.finish();
            i++;
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            i++;
        } else if (c == '{') {
            skipPast('}');
        } else if (c == ';' || (c == '%' && (i == 0 || text[i - 1] == '\n'))) {
            i = text.find('\n', i);
            if (i == std::string::npos) i = size;
        } else if (c == '(') {
            int depth = 0;
            do {
                if (text[i] == '{') {
                    skipPast('}');
                    continue;
                }
                if (text[i] == '(') depth++;
                if (text[i] == ')') depth--;
                i++;
            } while (i < size && depth > 0);
        } else if (c == '[') {
            if (builder.hasMoves()) builder.finish();
            const size_t begin = i + 1;
            skipPast(']');
            const std::string fen = fenTag(text.substr(begin, i - begin - 1));
            if (!fen.empty()) builder.start(fen);
        } else if (c == '$') {
            builder.annotate(std::atoi(text.c_str() + i + 1));
            i++;
            while (i < size && std::isdigit(static_cast<unsigned char>(text[i]))) i++;
        } else {
            const size_t begin = i;
            while (i < size && !std::isspace(static_cast<unsigned char>(text[i])) && !std::strchr("{}();[$", text[i]))
                i++;
            std::string token = text.substr(begin, i - begin);
            if (token == "1-0" || token == "0-1" || token == "1/2-1/2" || token == "*") {
                builder.setResult(token == "1-0"   ? whiteWins
                                  : token == "0-1" ? blackWins
                                  : token == "*"   ? unknownResult
                                                   : drawn);
                builder.finish();
                continue;
            }
            // "12." and "12...e5" carry a move number
            size_t number = 0;
            while (number < token.size() && std::isdigit(static_cast<unsigned char>(token[number]))) number++;
            if (number > 0 && number < token.size() && token[number] == '.') {
                while (number < token.size() && token[number] == '.') number++;
                token.erase(0, number);
            }
            if (!token.empty()) builder.move(token);
        }
    }
    if (builder.hasMoves()) builder.finish();
    return builder.games;
}
