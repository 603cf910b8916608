/* A timer sends a signal to this thread; the handler notes in which library's code the thread stood. */
#define _GNU_SOURCE
#include "share.h"

#include <link.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#ifndef sigev_notify_thread_id /* older C libraries have the field without the name */
#define sigev_notify_thread_id _sigev_un._tid
#endif

struct code {
    ElfW(Addr) begin, end;
    char library[64];
    long looks;
};

enum { most_codes = 64 };
static struct code codes[most_codes];
static int code_count;
static long all_looks;
static timer_t timer;

static int note_code(struct dl_phdr_info* info, size_t size, void* unused)
{
    (void)size, (void)unused;
    const char* slash = strrchr(info->dlpi_name, '/');
    const char* name = slash ? slash + 1 : info->dlpi_name[0] ? info->dlpi_name : "the program";
    for (int i = 0; i < info->dlpi_phnum && code_count < most_codes; ++i) {
        const ElfW(Phdr)* segment = &info->dlpi_phdr[i];
        if (segment->p_type != PT_LOAD || !(segment->p_flags & PF_X)) continue;
        struct code* code = &codes[code_count++];
        code->begin = info->dlpi_addr + segment->p_vaddr;
        code->end = code->begin + segment->p_memsz;
        snprintf(code->library, sizeof code->library, "%s", name);
    }
    return 0;
}

static void look(int signal, siginfo_t* info, void* context)
{
    (void)signal, (void)info;
    const ElfW(Addr) at = (ElfW(Addr))((ucontext_t*)context)->uc_mcontext.gregs[REG_RIP];
    ++all_looks;
    for (int i = 0; i < code_count; ++i)
        if (at >= codes[i].begin && at < codes[i].end) ++codes[i].looks;
}

void begin_shares(void)
{
    code_count = 0, all_looks = 0;
    memset(codes, 0, sizeof codes);
    dl_iterate_phdr(note_code, NULL);
}

void start_looking(void)
{
    struct sigaction action = {.sa_sigaction = look, .sa_flags = SA_SIGINFO | SA_RESTART};
    struct sigevent event = {.sigev_notify = SIGEV_THREAD_ID, .sigev_signo = SIGPROF};
    event.sigev_notify_thread_id = gettid();
    const struct itimerspec every = {{0, 1000000}, {0, 1000000}};
    sigaction(SIGPROF, &action, NULL);
    if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0 || timer_settime(timer, 0, &every, NULL) != 0) {
        perror("factor: no timer");
        exit(1);
    }
}

void stop_looking(void) { timer_delete(timer); }

static int by_looks(const void* a, const void* b)
{
    const long left = ((const struct code*)a)->looks, right = ((const struct code*)b)->looks;
    return (left < right) - (left > right);
}

int shares(struct share found[most_shares])
{
    int count = 0;
    qsort(codes, (size_t)code_count, sizeof *codes, by_looks);
    for (; count < most_shares && count < code_count && codes[count].looks > 0; ++count) {
        memcpy(found[count].library, codes[count].library, sizeof found[count].library);
        found[count].part = (double)codes[count].looks / (double)all_looks;
    }
    return count;
}
