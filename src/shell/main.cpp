#include <cstdio>

static const char engineName[] = "Talvin_v8.05_x64";

int main() {
    setvbuf(stdin, nullptr, _IONBF, 0);
    setvbuf(stdout, nullptr, _IONBF, 0);
    printf("%s\n\nChoose mode: Type xboard or uci\n", engineName);
    return 0;
}
