/* guest CORE VERB: a program that opens the core privately, as the extensions of interpreters do.
     check   print orv_check() and the sentence
     kind    print the name of the kernels that were chosen, and the code that a kernel of theirs returns
     first   print orv_last_error() before the first computation, its status, and orv_last_error() after it
     call    call through_core_and_libm of the branch and print the result
     close   open, use and close the core 20 times, with threads that outlive it; nothing may stay in memory
     stack   the first use of everything in a thread with a stack of 128 KiB
     starve  the first call with memory for 0, 1, 2, ... requests to the C library, a line each: status and sentence
     modes   loading and calling leave the floating-point control register alone */
#include <dlfcn.h>
#include <errno.h>
#include <orv/orv.h>
#include <pthread.h>
#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmmintrin.h>

static void* core;

static void* find(const char* name)
{
    void* address = dlsym(core, name);
    if (address == NULL) printf("no symbol %s\n", name), exit(3);
    return address;
}

static void open_core(const char* path)
{
    core = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (core == NULL) puts(dlerror()), exit(3);
}

static int check(void)
{
    int (*status)(void) = (int (*)(void))find("orv_check");
    const char* (*sentence)(void) = (const char* (*)(void))find("orv_last_error");
    return printf("%d %s\n", status(), sentence()) < 0;
}

static int first(void)
{
    int (*daxpy)(int64_t, double, const double*, int64_t, double*, int64_t) =
        (int (*)(int64_t, double, const double*, int64_t, double*, int64_t))find("orv_daxpy");
    const char* (*sentence)(void) = (const char* (*)(void))find("orv_last_error");
    const double x = 1;
    double y = 2;
    printf("before: %s\n", sentence());
    printf("%d", daxpy(1, 3, &x, 1, &y, 1));
    return printf(" and %g after: %s\n", y, sentence()) < 0;
}

static void* symbol(const char* name) { return ((void* (*)(const char*))find("orv_branch_symbol"))(name); }

static int kind(void)
{
    if (((int (*)(void))find("orv_branch_status"))() != 0) return check();
    void* (*kernel)(const char*, const char*) = (void* (*)(const char*, const char*))find("orv_kernel");
    int (*code)(void) = (int (*)(void))kernel("test", "code");
    if (code == NULL) return check(), 1;
    return printf("%s %d\n", ((const char* (*)(void))find("orv_branch_name"))(), code()) < 0;
}

static int call(void)
{
    double (*kernel)(double) = (double (*)(double))symbol("through_core_and_libm");
    if (kernel == NULL) return 1;
    return printf("%.17g\n", kernel(0)) < 0;
}

static int maps_name_orv(void)
{
    char line[4096];
    int count = 0;
    FILE* maps = fopen("/proc/self/maps", "r");
    while (fgets(line, sizeof line, maps))
        if (strstr(line, "/liborv") || strstr(line, "/importing")) ++count;
    fclose(maps);
    return count;
}

static void use_memory(void)
{
    void* (*allocate)(long, long) = (void* (*)(long, long))find("orv_serv_allocate");
    void (*deallocate)(void*) = (void (*)(void*))find("orv_serv_deallocate");
    deallocate(allocate(1 << 20, 128));
}

static sem_t used, closed;

/* Keeps a block of the core's memory, and ends after the core has gone. */
static void* outlive(void* unused)
{
    use_memory();
    sem_post(&used);
    sem_wait(&closed);
    return unused;
}

static int close_again_and_again(const char* path)
{
    sem_init(&used, 0, 0), sem_init(&closed, 0, 0);
    for (int round = 0; round < 20; ++round) {
        open_core(path);
        if (symbol("dll_cpu_version") == NULL) return check(), 1;
        if (symbol("through_core_and_libm") != NULL) call();
        use_memory();
        pthread_t thread;
        pthread_create(&thread, NULL, outlive, NULL);
        sem_wait(&used);
        if (maps_name_orv() == 0) return puts("nothing was loaded"), 1;
        if (dlclose(core) != 0) return puts(dlerror()), 1;
        if (maps_name_orv() != 0) return printf("round %d left something behind\n", round), 1;
        sem_post(&closed);
        pthread_join(thread, NULL);
    }
    puts("nothing left");
    return 0;
}

static void* in_small_stack(void* path)
{
    open_core(path);
    use_memory();
    if (symbol("dll_cpu_version") == NULL) return path;
    orv_setting setting;
    ((int (*)(int, orv_setting*))find("orv_get_setting"))(0, &setting);
    check();
    return NULL;
}

static int small_stack(const char* path)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 << 10);
    pthread_t thread;
    void* failed = NULL;
    if (pthread_create(&thread, &attributes, in_small_stack, (void*)path) != 0) return 3;
    pthread_join(thread, &failed);
    return failed != NULL;
}

static int keep_modes(const char* path)
{
    const unsigned modes = (_mm_getcsr() & ~0x3fu) | _MM_ROUND_UP | _MM_FLUSH_ZERO_ON | 0x40;
    _mm_setcsr(modes);
    open_core(path);
    check();
    use_memory();
    const unsigned after = _mm_getcsr() & ~0x3fu;
    dlclose(core);
    return after != modes || (_mm_getcsr() & ~0x3fu) != modes;
}

/* In place of the C library's, which the dynamic linker uses too. Once none is left, none comes back. */
static long left = -1;
#ifndef SANITIZED
static int may_have(void)
{
    if (left == 0) errno = ENOMEM;
    return left < 0 || (left > 0 && left-- > 0);
}
#pragma GCC visibility push(default)
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* malloc(size_t bytes) { return may_have() ? __libc_malloc(bytes) : NULL; }
void* calloc(size_t count, size_t bytes) { return may_have() ? __libc_calloc(count, bytes) : NULL; }
void* realloc(void* block, size_t bytes) { return may_have() ? __libc_realloc(block, bytes) : NULL; }
#pragma GCC visibility pop
#endif

static int starve(void)
{
    int (*status)(void) = (int (*)(void))find("orv_check");
    const char* (*sentence)(void) = (const char* (*)(void))find("orv_last_error");
    for (int requests = 0, ended = 1; ended != 0; ++requests) {
        const pid_t child = fork();
        if (child == 0) {
            left = requests;
            const int answer = status();
            left = -1;
            printf("%d %s\n", answer, sentence());
            exit(answer);
        }
        if (waitpid(child, &ended, 0) < 0 || !WIFEXITED(ended)) return printf("ended by a signal\n"), 1;
    }
    return 0;
}

int main(int count, char** words)
{
    if (count < 3) return 2;
    const char *path = words[1], *verb = words[2];
    if (strcmp(verb, "close") == 0) return close_again_and_again(path);
    if (strcmp(verb, "stack") == 0) return small_stack(path);
    if (strcmp(verb, "modes") == 0) return keep_modes(path);
    open_core(path);
    if (strcmp(verb, "check") == 0) return check();
    if (strcmp(verb, "kind") == 0) return kind();
    if (strcmp(verb, "first") == 0) return first();
    if (strcmp(verb, "call") == 0) return call();
    if (strcmp(verb, "starve") == 0) return starve();
    return 2;
}
