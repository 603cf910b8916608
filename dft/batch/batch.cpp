// The entries of the batches, and the rules by which they plan.
#include "dft/batch/plan.h"
#include "dft/batch/rules.h"

namespace orv::dft::batch {

#define ARGUMENTS i64 n, i64 rows, i64 columns, i64 width, i64 one

namespace {

i32 tell(const Problem& p, i64* bytes, i64 (*count)(const Problem&))
{
    if (bytes == nullptr) return node_inconsistent;
    const i32 refused = p.refusal();
    if (refused == node_ok) *bytes = count(p);
    return refused;
}

i64 divisors(i64* out, i64 n)
{
    const i64 d = split_radix(n);
    if (d == 0) return 0;
    out[0] = d, out[1] = n / d;
    return 2;
}

} // namespace

#define BATCH_FORM(dir, letters, form_, t, R, forward)                                                                 \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##GetSize_##t(ARGUMENTS, i64* bytes)                                    \
    {                                                                                                                  \
        return tell({n, rows, columns, width, one, form_}, bytes, plan_bytes<R>);                                      \
    }                                                                                                                  \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##GetThreadSize_##t(ARGUMENTS, i64* bytes)                              \
    {                                                                                                                  \
        return tell({n, rows, columns, width, one, form_}, bytes, thread_bytes<R>);                                    \
    }                                                                                                                  \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##Init_##t(void* memory, ARGUMENTS)                                     \
    {                                                                                                                  \
        return init<R>(forward, memory, {n, rows, columns, width, one, form_});                                        \
    }                                                                                                                  \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##InitAlloc_##t(void** plan, ARGUMENTS)                                 \
    {                                                                                                                  \
        return init_alloc<R>(forward, plan, {n, rows, columns, width, one, form_});                                    \
    }                                                                                                                  \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##Free_##t(void* plan) { return end(plan); }
#define BATCH_IN_PLACE(dir, letters, t, T, forward)                                                                    \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##_##t(T* data, const BatchThread* ctx, const void* plan)               \
    {                                                                                                                  \
        return run<real_t<T>>(forward, data, data, ctx, plan);                                                         \
    }
#define BATCH_APART(dir, letters, t, T, forward)                                                                       \
    ORV_EXPORT i32 orvgDFT##dir##Batch##letters##_##t(const T* in, T* out, const BatchThread* ctx, const void* plan)   \
    {                                                                                                                  \
        return run<real_t<T>>(forward, in, out, ctx, plan);                                                            \
    }
#define BATCH_RULES(k, prefix)                                                                                         \
    ORV_EXPORT i64 prefix##_env##k##__chooseRule(i64 n) { return base_rule(n); }

#define BATCH(dir, forward, t, Type)                                                                                   \
    BATCH_FORM(dir, , BatchPlan::from_array_to_array, t, real_t<Type>, forward)                                        \
    BATCH_FORM(dir, I, BatchPlan::in_place, t, real_t<Type>, forward)                                                  \
    BATCH_FORM(dir, T, BatchPlan::strided, t, real_t<Type>, forward)                                                   \
    BATCH_FORM(dir, IT, BatchPlan::in_place + BatchPlan::strided, t, real_t<Type>, forward)                            \
    BATCH_APART(dir, , t, Type, forward)                                                                               \
    BATCH_IN_PLACE(dir, I, t, Type, forward)                                                                           \
    BATCH_APART(dir, T, t, Type, forward)                                                                              \
    BATCH_IN_PLACE(dir, IT, t, Type, forward)                                                                          \
    ORV_EXPORT i32 owngDFT##dir##Batch_##t##w7_hasBaseCase(i64 n) { return has_base_case(n); }                         \
    ORV_EXPORT i64 owngDFT##dir##Batch_##t##w7_divisorsIntNonTriv(i64* out, i64 n) { return divisors(out, n); }        \
    BATCH_RULES(19, owngDFT##dir##Batch_##t##w7)                                                                       \
    BATCH_RULES(22, owngDFT##dir##Batch_##t##w7)                                                                       \
    BATCH_RULES(31, owngDFT##dir##Batch_##t##w7)                                                                       \
    BATCH_RULES(32, owngDFT##dir##Batch_##t##w7)                                                                       \
    BATCH_RULES(33, owngDFT##dir##Batch_##t##w7)                                                                       \
    BATCH_RULES(34, owngDFT##dir##Batch_##t##w7)
BATCH(Fwd, true, 32fc, t_32fc)
BATCH(Fwd, true, 64fc, t_64fc)
BATCH(Inv, false, 32fc, t_32fc)
BATCH(Inv, false, 64fc, t_64fc)

#define PLAN_RULE(dir, k)                                                                                              \
    ORV_EXPORT i64 owngDFT##dir##Batch_64fcw7_env##k##_chooseRule(i64 n, i64 rows, i64 columns)                        \
    {                                                                                                                  \
        return plan_rule(n, rows, columns);                                                                            \
    }
PLAN_RULE(Fwd, 1)
PLAN_RULE(Fwd, 2)
PLAN_RULE(Inv, 1)
PLAN_RULE(Inv, 2)

} // namespace orv::dft::batch
