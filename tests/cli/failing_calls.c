/* Preloaded into the command: calls of the system that fail, and a library that refuses. KRO_FAIL="NAME ERROR FIRST
   COUNT" names the function, the error number or status, the first call that fails and how many do from there. Tells
   KRO_FAILED, a file, that one has failed. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <kro/view.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static void tell(void) {
    const char* path = getenv("KRO_FAILED");
    FILE* file = path != NULL ? fopen(path, "w") : NULL;
    if (file != NULL) {
        fclose(file);
    }
}

/* Whether this call fails, and with what. */
static int fails(const char* name, int* error) {
    static atomic_int seen;
    const char* wanted = getenv("KRO_FAIL");
    char chosen[32];
    int first = 0;
    int count = 0;
    if (wanted == NULL || sscanf(wanted, "%31s %d %d %d", chosen, error, &first, &count) != 4 ||
        strcmp(name, chosen) != 0) {
        return 0;
    }
    const int number = ++seen;
    if (number < first || number >= first + count) {
        return 0;
    }
    tell();
    return 1;
}

/* NAME is what the caller calls it; where files are larger than an address, the same under another name. */
#define KRO_FAILING(RESULT, NAME, CALLED, PARAMETERS, ARGUMENTS, ANSWER) \
    RESULT CALLED PARAMETERS;                                            \
    RESULT CALLED PARAMETERS {                                           \
        int error = 0;                                                   \
        if (fails(NAME, &error)) {                                       \
            return ANSWER;                                               \
        }                                                                \
        RESULT(*real) PARAMETERS = NULL;                                 \
        *(void**)&real = dlsym(RTLD_NEXT, #CALLED);                      \
        return real ARGUMENTS;                                           \
    }
#define BY_ERRNO (errno = error) == 0 ? 0 : -1
#define BY_RESULT error

KRO_FAILING(ssize_t, "read", read, (int file, void* target, size_t size), (file, target, size), BY_ERRNO)
KRO_FAILING(ssize_t, "pread", pread, (int file, void* target, size_t size, off_t at), (file, target, size, at),
            BY_ERRNO)
KRO_FAILING(ssize_t, "pread", pread64, (int file, void* target, size_t size, off64_t at), (file, target, size, at),
            BY_ERRNO)
KRO_FAILING(ssize_t, "write", write, (int file, const void* source, size_t size), (file, source, size), BY_ERRNO)
KRO_FAILING(int, "close", close, (int file), (file), BY_ERRNO)
KRO_FAILING(int, "fstat", fstat, (int file, struct stat* status), (file, status), BY_ERRNO)
KRO_FAILING(int, "fstat", fstat64, (int file, struct stat64* status), (file, status), BY_ERRNO)
KRO_FAILING(int, "fstat", __fstat64_time64, (int file, void* status), (file, status), BY_ERRNO)
KRO_FAILING(int, "renameat2", renameat2, (int from, const char* old, int to, const char* new, unsigned flags),
            (from, old, to, new, flags), BY_ERRNO)

typedef void* Work(void*);
KRO_FAILING(int, "pthread_create", pthread_create,
            (pthread_t * thread, const pthread_attr_t* attributes, Work* work, void* argument),
            (thread, attributes, work, argument), BY_RESULT)

KRO_FAILING(int32_t, "kroCreate", kroCreate, (KroContext * *handle), (handle), BY_RESULT)
KRO_FAILING(int32_t, "kroBMPAdjust", kroBMPAdjust, (const KroContext* handle, const KroImage* image), (handle, image),
            BY_RESULT)
KRO_FAILING(int32_t, "kroConvertView", kroConvertView,
            (const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options),
            (source, picture, options), BY_RESULT)
