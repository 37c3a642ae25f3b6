/* The least that a C program does to the files of a tiny model:
 *
 *     tiny OUTPUT BYTES INPUT...
 *
 * Opens and reads every input, and writes as many bytes to the output as it is told. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void fail(const char* name) {
    perror(name);
    exit(1);
}

int main(int argumentCount, char** arguments) {
    static char buffer[65536];
    if (argumentCount < 3) {
        fprintf(stderr, "usage: tiny OUTPUT BYTES INPUT...\n");
        return 2;
    }
    for (int i = 3; i < argumentCount; ++i) {
        FILE* input = fopen(arguments[i], "rb");
        if (input == NULL) {
            fail(arguments[i]);
        }
        while (fread(buffer, 1, sizeof buffer, input) == sizeof buffer) {}
        fclose(input);
    }
    FILE* output = fopen(arguments[1], "wb");
    if (output == NULL) {
        fail(arguments[1]);
    }
    size_t left = strtoul(arguments[2], NULL, 10);
    while (left > 0) {
        const size_t size = left < sizeof buffer ? left : sizeof buffer;
        if (fwrite(buffer, 1, size, output) != size) {
            fail(arguments[1]);
        }
        left -= size;
    }
    if (fclose(output) != 0) {
        fail(arguments[1]);
    }
    puts("done");
    return 0;
}
