// The table of handles. A handle is the number of a slot, and above it how often the slot was used: so one that was
// released is told from its successor.
#include "compat/sparse/matrix.h"

#include <pthread.h>

namespace orv::sparseblas {
namespace {

constexpr int slot_bits = 20, most_slots = 1 << slot_bits, most_uses = (1 << (31 - slot_bits)) - 1;

struct Slot {
    Matrix* matrix;
    int uses, next_free;
};
constexpr int none = -1;

struct Table {
    Array<Slot> slots;
    int count = 0, first_free = none;

    ~Table() // what a program has left when the library is closed
    {
        for (int slot = 0; slot < count; ++slot)
            if (Matrix* matrix = (*this)[slot].matrix; matrix != nullptr) destroy(matrix);
    }
    Slot& operator[](int slot) { return slots[static_cast<std::size_t>(slot)]; }
};
constinit Table table;
pthread_mutex_t in_use = PTHREAD_MUTEX_INITIALIZER;

struct Lock {
    Lock() { pthread_mutex_lock(&in_use); }
    Lock(const Lock&) = delete;
    ~Lock() { pthread_mutex_unlock(&in_use); }
};

Slot* slot_of(int handle)
{
    const int slot = handle & (most_slots - 1);
    if (handle < 0 || slot >= table.count) return nullptr;
    Slot& s = table[slot];
    return s.matrix != nullptr && s.uses == handle >> slot_bits ? &s : nullptr;
}

} // namespace

void destroy(Matrix* matrix)
{
    matrix->~Matrix();
    std::free(matrix);
}

int publish(Matrix* matrix)
{
    const Lock lock;
    if (table.first_free == none) {
        if (table.count == most_slots || !table.slots.reserve(static_cast<std::size_t>(table.count) + 1))
            return refused;
        table[table.count] = {nullptr, 0, none};
        table.first_free = table.count++;
    }
    const int slot = table.first_free;
    Slot& s = table[slot];
    table.first_free = s.next_free;
    s.matrix = matrix, s.uses = s.uses % most_uses + 1;
    return s.uses << slot_bits | slot;
}

Matrix* matrix_of(int handle)
{
    const Lock lock;
    const Slot* s = slot_of(handle);
    return s == nullptr ? nullptr : s->matrix;
}

Matrix* withdraw(int handle)
{
    const Lock lock;
    Slot* s = slot_of(handle);
    if (s == nullptr) return nullptr;
    Matrix* matrix = s->matrix;
    s->matrix = nullptr, s->next_free = table.first_free;
    table.first_free = handle & (most_slots - 1);
    return matrix;
}

} // namespace orv::sparseblas
