/* Files that go wrong: at the n-th call, NTH_CALL_DOES says what happens. NTH_CALL_OF names the one
 * function whose calls are meant; without it all are.
 *   error          the call fails, and does nothing
 *   again          the call is interrupted before it has done anything
 *   part           a read or write does half of what was asked for
 *   before=SIGNAL  the program gets a signal, by number, and then the call is made
 *   after=SIGNAL   the same, with the call first */
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <sys/stat.h>

#include "nth_call.h"

static const char* does(void) {
    const char* action = getenv("NTH_CALL_DOES");
    return action ? action : "";
}

static int isChosen(const char* function) {
    const char* only = getenv("NTH_CALL_OF");
    return (!only || !strcmp(only, function)) && isNthCall();
}

static void raiseIf(const char* when) {
    const size_t length = strlen(when);
    if (!strncmp(does(), when, length)) raise(atoi(does() + length));
}

/* What happens to a chosen call before it is made; whether it is not made at all. */
static int failsAtOnce(void) {
    raiseIf("before=");
    if (!strcmp(does(), "error")) {
        errno = EIO;
    } else if (!strcmp(does(), "again")) {
        errno = EINTR;
    } else {
        return 0;
    }
    return 1;
}

static size_t part(int chosen, size_t count) {
    return chosen && count > 1 && !strcmp(does(), "part") ? count / 2 : count;
}

/* The body of a function: hands its arguments on to the function of that name after this one. */
#define HAND_ON(Result, failure, name, parameters, arguments) \
    static Result(*real) parameters;                          \
    if (!real) *(void**)&real = dlsym(RTLD_NEXT, name);       \
    const int chosen = isChosen(name);                        \
    if (chosen && failsAtOnce()) return failure;              \
    Result const result = real arguments;                     \
    if (chosen) raiseIf("after=");                            \
    return result

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0;
    va_end(more);
    HAND_ON(int, -1, "open64", (const char*, int, mode_t), (path, flags, mode));
}

FILE* fopen(const char* path, const char* mode) {
    HAND_ON(FILE*, NULL, "fopen64", (const char*, const char*), (path, mode));
}

int mkostemps(char* path, int suffix, int flags) {
    HAND_ON(int, -1, "mkostemps64", (char*, int, int), (path, suffix, flags));
}

int fchmod(int file, mode_t mode) {
    HAND_ON(int, -1, "fchmod", (int, mode_t), (file, mode));
}

int fchown(int file, uid_t owner, gid_t group) {
    HAND_ON(int, -1, "fchown", (int, uid_t, gid_t), (file, owner, group));
}

int ftruncate(int file, off_t length) {
    HAND_ON(int, -1, "ftruncate64", (int, off_t), (file, length));
}

ssize_t read(int file, void* bytes, size_t count) {
    HAND_ON(ssize_t, -1, "read", (int, void*, size_t), (file, bytes, part(chosen, count)));
}

ssize_t write(int file, const void* bytes, size_t count) {
    HAND_ON(ssize_t, -1, "write", (int, const void*, size_t), (file, bytes, part(chosen, count)));
}

int fsync(int file) {
    HAND_ON(int, -1, "fsync", (int), (file));
}

int close(int file) {
    HAND_ON(int, -1, "close", (int), (file));
}

int fclose(FILE* file) {
    HAND_ON(int, EOF, "fclose", (FILE*), (file));
}

int rename(const char* from, const char* to) {
    HAND_ON(int, -1, "rename", (const char*, const char*), (from, to));
}

int unlink(const char* path) {
    HAND_ON(int, -1, "unlink", (const char*), (path));
}
