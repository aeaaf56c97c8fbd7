/* Fills as many bytes of fresh memory as its argument says, in hexadecimal: what a fill costs at least. */

#include <stdlib.h>
#include <string.h>

int main(int argc, char** argv)
{
    const size_t size = argc > 1 ? strtoull(argv[1], NULL, 16) : 0;
    char* const memory = malloc(size);
    if (memory == NULL) {
        return EXIT_FAILURE;
    }
    memset(memory, 0xa5, size);
    /* The memory counts as read, so that the fill is not left out. */
    __asm__ volatile("" : : "r"(memory) : "memory");
    free(memory);
    return EXIT_SUCCESS;
}
