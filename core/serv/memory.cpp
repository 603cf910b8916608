// Work memory for kernels: aligned blocks of the C library's allocator, the last few of each thread kept for reuse.
//
// A kernel takes one or two large blocks a call and returns them in the same call; fresh pages from the system would
// cost it more than a small product. So each thread keeps up to four returned blocks. Only the owner puts blocks in its
// shelf; anyone may empty a place (orv_free_memory does), so a place is one atomic pointer that is taken by exchange,
// and taking and returning a block needs no lock. A block that another thread returns moves to that thread's shelf.
//
// Objects that outlive a call (orv_serv_malloc) are not kept: they come and go rarely, in all sizes.
//
// Large blocks ask for large pages. Fresh small ones cost more than most passes over a block, and a pass that goes to
// places anywhere in it waits for the tables of pages; transposing a large sparse matrix takes half the time so.
#include "orv/memory.h"
#include "core/serv/settings.h"
#include "frame/export.h"
#include "frame/serv.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <sys/mman.h>

namespace orv::core {
namespace {

// Stands right below each block.
struct Header {
    void* origin; // what the C library gave
    i64 capacity; // of work memory; 0: never kept
};

constexpr i64 least_alignment = 128; // work blocks start a pair of cache lines, whatever was asked
constexpr i64 granule = 4096;        // a small page; capacities are multiples, so that nearby sizes share blocks
constexpr i64 least_of_large_pages = i64{4} << 20; // a block of so many bytes has at least one of 2 MiB in it
constexpr i64 most_bytes = i64{1} << 47;           // the address space of a process

Header& header(void* block) { return static_cast<Header*>(block)[-1]; }

bool sensible(i64 bytes, i64 alignment)
{
    const bool power_of_two = alignment > 0 && (alignment & (alignment - 1)) == 0;
    return power_of_two && alignment <= most_bytes && bytes >= 0 && bytes <= most_bytes;
}

// For the whole small pages of a block that has these bytes at least; whether the system follows is its own affair.
void ask_for_large_pages(void* origin, i64 bytes)
{
    const auto from = round_up(reinterpret_cast<i64>(origin), granule);
    madvise(reinterpret_cast<void*>(from), static_cast<std::size_t>((bytes / granule - 1) * granule), MADV_HUGEPAGE);
}

// Null if there is no memory, or if the request makes no sense.
void* fresh(i64 bytes, i64 alignment, i64 capacity)
{
    if (!sensible(bytes, alignment)) return nullptr;
    alignment = max(alignment, sizeof(Header));
    void* origin;
    if (posix_memalign(&origin, alignment, alignment + bytes) != 0) return nullptr;
    if (bytes >= least_of_large_pages) ask_for_large_pages(origin, bytes);
    void* block = static_cast<char*>(origin) + alignment;
    header(block) = {origin, capacity};
    return block;
}

constinit std::atomic<i64> held{0};       // capacities of all work blocks, in use or kept
constinit std::atomic<i64> most_kept{-1}; // -1: the environment is not read yet

i64 limit()
{
    i64 known = most_kept.load(std::memory_order_relaxed);
    if (known >= 0) return known;
    const i64 found = number(Setting::memory_limit);
    return most_kept.compare_exchange_strong(known, found) ? found : known;
}

void release(void* block)
{
    const Header h = header(block);
    if (h.capacity > 0) held.fetch_sub(h.capacity, std::memory_order_relaxed);
    std::free(h.origin);
}

struct Shelf;
bool enlist(Shelf& shelf); // below; false if nothing is kept any more

struct Shelf {
    static constexpr int places = 4;
    std::atomic<void*> block[places];
    i64 capacity[places]; // of what was put there last; only the owner looks
    Shelf *next, *previous;
    bool listed;

    // Both out of line and on their own: the address of the thread's shelf is looked up once, not at each use.

    // A place whose block serves, the smallest such; taken blocks leave the place empty.
    [[gnu::noipa]] void* take(i64 bytes, i64 alignment)
    {
        int best = -1;
        for (int i = 0; i < places; ++i) {
            const auto kept = reinterpret_cast<std::uintptr_t>(block[i].load(std::memory_order_relaxed));
            if (kept == 0 || (kept & (alignment - 1)) != 0 || capacity[i] < bytes) continue;
            if (best < 0 || capacity[i] < capacity[best]) best = i;
        }
        return best < 0 ? nullptr : block[best].exchange(nullptr, std::memory_order_acquire);
    }

    // Keeps a block in an empty place, else in place of the smallest if that one is smaller. What finds no place is
    // returned.
    [[gnu::noipa]] void* keep(void* returned)
    {
        if (!listed && !enlist(*this)) return returned;
        const i64 size = header(returned).capacity;
        int smallest = 0;
        for (int i = 0; i < places; ++i) {
            if (block[i].load(std::memory_order_relaxed) == nullptr) {
                capacity[i] = size;
                block[i].store(returned, std::memory_order_release); // only the owner fills places
                return nullptr;
            }
            if (capacity[i] < capacity[smallest]) smallest = i;
        }
        if (capacity[smallest] >= size) return returned;
        capacity[smallest] = size;
        return block[smallest].exchange(returned, std::memory_order_acq_rel);
    }

    void clear()
    {
        for (auto& place : block)
            if (void* kept = place.exchange(nullptr, std::memory_order_acquire)) release(kept);
    }
};

// All shelves with blocks, so that one call can empty them. A shelf lies in its thread's own storage and leaves the
// list before that storage goes.
constinit thread_local Shelf own{}; // no guard at each use
Shelf* shelves;
bool closed; // nothing is kept any more
pthread_mutex_t shelves_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_key_t thread_end; // its destructor runs at the end of each thread that has a listed shelf

struct Lock {
    Lock() { pthread_mutex_lock(&shelves_mutex); }
    ~Lock() { pthread_mutex_unlock(&shelves_mutex); }
};

[[gnu::noinline]] bool enlist(Shelf& shelf)
{
    const Lock lock;
    if (closed || pthread_setspecific(thread_end, &shelf) != 0) return false;
    shelf.next = shelves, shelf.previous = nullptr;
    if (shelves) shelves->previous = &shelf;
    shelves = &shelf;
    return shelf.listed = true;
}

void end_thread(void*)
{
    const Lock lock;
    own.clear();
    if (!own.listed || closed) return;
    (own.previous ? own.previous->next : shelves) = own.next;
    if (own.next) own.next->previous = own.previous;
    own.listed = false; // a later destructor of this thread may still ask for memory and list it again
}

void clear_all()
{
    for (Shelf* shelf = shelves; shelf != nullptr; shelf = shelf->next) shelf->clear();
}

void before_fork() { pthread_mutex_lock(&shelves_mutex); }
void after_fork() { pthread_mutex_unlock(&shelves_mutex); }

// The child has only the thread that forked: kept blocks of the others would be nobody's.
void begin_child()
{
    clear_all();
    own.next = own.previous = nullptr;
    shelves = own.listed ? &own : nullptr;
    after_fork();
}

// Earlier than other parts of the library (their constructors have no number), so that its lock is the last to be taken
// before a fork: the team's threads may have to end before, and a thread's end takes the lock.
[[gnu::constructor(101)]] void start()
{
    pthread_key_create(&thread_end, end_thread);
    pthread_atfork(before_fork, after_fork, begin_child);
}

// Unloading leaves no memory behind, and no destructor that a thread would call after the code is gone.
[[gnu::destructor]] void stop()
{
    {
        const Lock lock;
        closed = true;
        clear_all();
    }
    pthread_key_delete(thread_end);
}

} // namespace
} // namespace orv::core

using namespace orv;
using namespace orv::core;

ORV_EXPORT void* orv_serv_allocate(i64 bytes, i64 alignment)
{
    if (!sensible(bytes, alignment)) return nullptr;
    if (void* kept = own.take(bytes, alignment)) return kept;
    const i64 capacity = round_up(max(bytes, 1), granule);
    void* block = fresh(capacity, max(alignment, least_alignment), capacity);
    if (block != nullptr) held.fetch_add(capacity, std::memory_order_relaxed);
    return block;
}

// Both kinds of blocks have one form, so either operation takes both back. Neither calls the other by its exported
// name, which a program may have replaced.
static void give_back(void* block)
{
    if (block == nullptr) return;
    if (header(block).capacity > 0 && held.load(std::memory_order_relaxed) <= limit()) {
        block = own.keep(block);
    }
    if (block != nullptr) release(block);
}

ORV_EXPORT void orv_serv_deallocate(void* block) { give_back(block); }

ORV_EXPORT void* orv_serv_malloc(i64 bytes, i64 alignment) { return fresh(bytes, alignment, 0); }

ORV_EXPORT void* orv_serv_calloc(i64 count, i64 element_size, i64 alignment)
{
    i64 bytes;
    if (count < 0 || element_size < 0 || __builtin_mul_overflow(count, element_size, &bytes)) return nullptr;
    void* block = fresh(bytes, alignment, 0);
    return block ? std::memset(block, 0, bytes) : nullptr;
}

ORV_EXPORT void orv_serv_free(void* block) { give_back(block); }

void orv_free_memory()
{
    const Lock lock;
    clear_all();
}

void orv_set_memory_limit(size_t bytes)
{
    const i64 limit = bytes < static_cast<size_t>(most_bytes) ? static_cast<i64>(bytes) : most_bytes;
    most_kept.store(limit, std::memory_order_relaxed);
    if (held.load(std::memory_order_relaxed) > limit) orv_free_memory();
}

size_t orv_get_memory_limit() { return limit(); }
size_t orv_memory_held() { return held.load(std::memory_order_relaxed); }
