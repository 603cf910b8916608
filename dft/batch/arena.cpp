// What plans are made of: memory that is given out from below, lists of objects, arrays of 64-bit entries. None of it
// carries a tag, and none of it runs out: sizes are told before.
#include "dft/batch/objects.h"

namespace orv::dft::batch {

ORV_EXPORT void* orvgArenaMalloc(BatchArena* arena, i64 size)
{
    t_8u* const given = *arena;
    *arena = given + size;
    return given;
}

// Blocks go back in the reverse order; then the last one's address is the word.
ORV_EXPORT void orvgArenaFree(BatchArena* arena, void* /* address */, i64 size) { *arena = *arena - size; }

ORV_EXPORT void orvgEnvList___init__(BatchEnvList* node, BatchArena* arena, i64 alignment)
{
    *node = {nullptr, nullptr, arena, alignment};
}

ORV_EXPORT i32 orvgEnvList_add(BatchEnvList* head, BatchEnv* env)
{
    BatchEnvList* last = head;
    while (last->next != nullptr) last = last->next;
    if (last->env != nullptr) {
        auto* node = static_cast<BatchEnvList*>(orvgArenaMalloc(last->arena, orvgEnvList_add_mem(1, last->alignment)));
        orvgEnvList___init__(node, last->arena, last->alignment);
        last = last->next = node;
    }
    last->env = env;
    return node_ok;
}

ORV_EXPORT i64 orvgEnvList_add_mem(i64 count, i64 alignment) { return count * block(sizeof(BatchEnvList), alignment); }

ORV_EXPORT void orvgEnvList_freeChildren(BatchEnvList* head)
{
    for (BatchEnvList* node = head; node != nullptr; node = node->next) {
        BatchEnv* const env = node->env;
        if (env == nullptr) continue;
        env->table->del(env);
        orvgArenaFree(node->arena, env, block(env->table->size, node->alignment));
        node->env = nullptr;
    }
}

ORV_EXPORT void orvgEnvList___del__(BatchEnvList* head)
{
    for (BatchEnvList* node = head->next; node != nullptr; node = node->next)
        orvgArenaFree(head->arena, node, orvgEnvList_add_mem(1, head->alignment));
    head->next = nullptr;
}

ORV_EXPORT void orvgChList___init__(BatchChList* list, BatchArena* arena, i64 alignment)
{
    *list = {nullptr, arena, alignment, 0};
}

ORV_EXPORT i64 orvgChList_add_mem(i64 n, i64 alignment) { return block(n * i64{sizeof(i64)}, alignment); }

ORV_EXPORT i32 orvgChList_setSize(BatchChList* list, i64 n)
{
    if (list->size != 0) return node_internal_error;
    list->data = static_cast<i64*>(orvgArenaMalloc(list->arena, orvgChList_add_mem(n, list->alignment)));
    list->size = n;
    return node_ok;
}

ORV_EXPORT void orvgChList___del__(BatchChList* list)
{
    if (list->size > 0) orvgArenaFree(list->arena, list->data, orvgChList_add_mem(list->size, list->alignment));
    list->data = nullptr, list->size = 0;
}

} // namespace orv::dft::batch
