#include "platform/console.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/mutex.h"

namespace {

constexpr const char outputVariable[] = "TALVIN_OUTPUT";
int uciMode = -1;                       // not yet read from the environment
constexpr int lineBufferBytes = 12000;  // an echoed command line fits

bool hasText(const char* line, size_t length) {
    for (size_t i = 0; i < length; i++)
        if (line[i] != ' ' && line[i] != '\r' && line[i] != '\t') return true;
    return false;
}

}  // namespace

void setUciOutput() {
    uciMode = 1;
    setenv(outputVariable, "uci", 1);
}

bool uciOutput() {
    if (uciMode < 0) {
        const char* value = std::getenv(outputVariable);
        uciMode = value != nullptr && std::strcmp(value, "uci") == 0;
    }
    return uciMode == 1;
}

void writeInfo(const char* text) {
    if (!uciOutput()) {
        fputs(text, stdout);
        return;
    }
    while (*text) {
        const char* end = std::strchr(text, '\n');
        const size_t length = end ? static_cast<size_t>(end - text) : std::strlen(text);
        if (hasText(text, length)) printf("info string %.*s\n", static_cast<int>(length), text);
        text += length + (end ? 1 : 0);
    }
}

// The formatted text, written under the I/O mutex by write.
static void printFormatted(void (*write)(const char*), const char* format, va_list arguments) {
    char text[lineBufferBytes];
    vsnprintf(text, sizeof text, format, arguments);
    lockGuard io(mutex::io);
    write(text);
}

void printLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printFormatted([](const char* text) { fputs(text, stdout); }, format, arguments);
    va_end(arguments);
}

void printInfo(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printFormatted(writeInfo, format, arguments);
    va_end(arguments);
}
