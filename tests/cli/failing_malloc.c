/* Preloaded into the command: the KRO_FAIL_AT-th allocation that its main function asks for fails, and with
   KRO_FAIL_ON all later ones too. Prints nothing; KRO_COUNT names a file that the number of allocations goes to. A
   program that chooses the time itself calls kroFailAt. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

static atomic_long seen;
static long failAt;
static long failures = 1;
static atomic_int running;

static int fails(void) {
    if (!running) {
        return 0;
    }
    const long number = ++seen;
    if (failAt != 0 && number >= failAt && number - failAt < failures) {
        errno = ENOMEM;
        return 1;
    }
    return 0;
}

void* malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }
void* realloc(void* memory, size_t size) { return fails() ? NULL : __libc_realloc(memory, size); }
void* memalign(size_t alignment, size_t size) { return fails() ? NULL : __libc_memalign(alignment, size); }
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void** memory, size_t alignment, size_t size) {
    *memory = memalign(alignment, size);
    return *memory == NULL ? ENOMEM : 0;
}

/* Counts anew: so many allocations fail from that number on, none where it is 0. Returns how many there were since
   the last call. */
long kroFailAt(long number, long count) {
    const long before = seen;
    running = 0;
    failAt = number;
    failures = count;
    seen = 0;
    running = 1;
    return before;
}

static void report(void) {
    running = 0;
    const char* path = getenv("KRO_COUNT");
    FILE* file = path != NULL ? fopen(path, "w") : NULL;
    if (file != NULL) {
        fprintf(file, "%ld\n", (long)seen);
        fclose(file);
    }
}

static int (*realMain)(int, char**, char**);

static int countedMain(int count, char** arguments, char** environment) {
    const char* at = getenv("KRO_FAIL_AT");
    failAt = at != NULL ? atol(at) : 0;
    failures = getenv("KRO_FAIL_ON") != NULL ? LONG_MAX : 1;
    running = 1;
    const int result = realMain(count, arguments, environment);
    report();
    return result;
}

typedef int Start(int (*)(int, char**, char**), int, char**, void (*)(void), void (*)(void), void (*)(void), void*);

int __libc_start_main(int (*program)(int, char**, char**), int count, char** arguments, void (*begin)(void),
                      void (*end)(void), void (*loaderEnd)(void), void* stack) {
    realMain = program;
    Start* start = (Start*)dlsym(RTLD_NEXT, "__libc_start_main");
    return start(countedMain, count, arguments, begin, end, loaderEnd, stack);
}
