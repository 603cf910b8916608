// Plans: what they are made of by rule, the bytes that takes, and how they run.
//
// Each step that builds has a twin that counts, so memory of exactly the size told will do.
#include "dft/batch/plan.h"
#include "dft/batch/columns.h"
#include "frame/serv.h"

namespace orv::dft::batch {

i32 Problem::refusal() const
{
    if (n < 1 || rows < 1 || columns < 1 || width < 1 || one < 1) return node_inconsistent;
    return rows != 1 || one != 1 || factors_of(n).count == 0 ? node_internal_error : node_ok;
}
Layout Problem::from() const { return (form & BatchPlan::strided) != 0 ? Layout{width, 1} : Layout{1, n}; }
Layout Problem::to() const { return (form & BatchPlan::in_place) != 0 ? from() : Layout{1, n}; }
i64 Problem::share_rule() const
{
    if (from().distance != 1 || to().distance != 1) return 3;
    return is_straight(n) ? 1 : 2;
}

namespace {

// Entries of 64 bits in each list of a plan.
template <class R> struct ListSizes {
    i64 of[4];
    constexpr explicit ListSizes(const Factors& f) : of()
    {
        i64 transforms = 1;
        for (i64 j = 0; j < f.joins(); ++j) transforms *= f.of[j];
        of[twiddles] = reals_of_twiddles<R>(f) * i64{sizeof(R)} / i64{sizeof(i64)};
        of[starts] = transforms, of[radixes] = f.count, of[places] = f.joins();
    }
};

template <class T> T* make(BatchArena* arena, const BatchEnvTable& table)
{
    auto* const object = static_cast<T*>(orvgArenaMalloc(arena, block(sizeof(T))));
    *reinterpret_cast<BatchEnv*>(object) = {&table, arena};
    return object;
}

template <class R> void put_tables(BatchEnv* env)
{
    const auto& plan = *reinterpret_cast<BatchPlan*>(env);
    const Factors f = factors_of(plan.length);
    for (i64 j = 0; j < f.count; ++j) plan.lists[radixes]->data[j] = f.of[j];
    put_starts(f, plan.length, plan.apart > 0, plan.lists[starts]->data);
    put_twiddles(f, reinterpret_cast<R*>(plan.lists[twiddles]->data), plan.lists[places]->data);
}

template <class Parent> void end_parent(BatchEnv* env)
{
    auto& parent = *reinterpret_cast<Parent*>(env);
    orvgEnvList_freeChildren(&parent.children);
    orvgEnvList___del__(&parent.children);
}
constexpr BatchEnvTable division_table{sizeof(Division), end_parent<Division>, nullptr, nullptr};
constexpr BatchEnvTable share_table{sizeof(Share), end_parent<Share>, nullptr, nullptr};

void end_base(BatchEnv*) {} // the tables are the plan's
constexpr BatchEnvTable base_table{sizeof(Base), end_base, nullptr, nullptr};

void add_base(Share& share, const BatchPlan& plan, i64 together)
{
    auto* const base = make<Base>(share.env.arena, base_table);
    base->plan = &plan, base->together = together;
    orvgEnvList_add(&share.children, &base->env);
}

// Whether a rule's columns leave some that fill no register, or leave that to how a team shares them.
template <class R> constexpr bool has_rest(i64 rule) { return rule != 3 && lanes<R> > 1; }

Problem problem_of(const BatchPlan& plan)
{
    return {plan.length, plan.rows, plan.columns, plan.input_width, 1, plan.form};
}

template <class R> i32 plan_top(BatchEnv* env)
{
    auto& plan = *reinterpret_cast<BatchPlan*>(env);
    const Problem p = problem_of(plan);
    const Factors f = factors_of(p.n);
    if (f.count == 0) return node_internal_error;
    const ListSizes<R> sizes(f);
    for (int i = 0; i < 4; ++i)
        if (sizes.of[i] > 0) orvgChList_setSize(plan.lists[i], sizes.of[i]);
    plan.apart *= p.n / f.last(); // Init has left the sign of the direction

    auto* const division = make<Division>(env->arena, division_table);
    orvgEnvList___init__(&division->children, env->arena, alignment);
    division->columns = p.columns, division->from = p.from(), division->to = p.to();
    orvgEnvList_add(plan.children, &division->env);
    auto* const share = make<Share>(env->arena, share_table);
    orvgEnvList___init__(&share->children, env->arena, alignment);
    share->rule = p.share_rule();
    orvgEnvList_add(&division->children, &share->env);
    if (share->rule == 3) add_base(*share, plan, staged_together<R>(p.n, p.columns));
    else add_base(*share, plan, split_together<R>(p.n, p.columns));
    if (has_rest<R>(share->rule)) add_base(*share, plan, lanes<R>);
    return node_ok;
}

void end_top(BatchEnv* env)
{
    auto& plan = *reinterpret_cast<BatchPlan*>(env);
    orvgEnvList_freeChildren(plan.children);
    orvgEnvList___del__(plan.children);
    for (int i = 4; i-- > 0;) orvgChList___del__(plan.lists[i]);
    orvgArenaFree(env->arena, plan.children, block(sizeof(BatchEnvList)));
    for (int i = 4; i-- > 0;) orvgArenaFree(env->arena, plan.lists[i], block(sizeof(BatchChList)));
}

// The instances: one for each direction and precision. Those of doubles fill their tables in a step of their own.
template <class R> i32 plan_with_tables(BatchEnv* env)
{
    const i32 status = plan_top<R>(env);
    if (status == node_ok) put_tables<R>(env);
    return status;
}
template <class R>
constexpr BatchEnvTable top_of = sizeof(R) == 8
                                     ? BatchEnvTable{sizeof(BatchPlan), end_top, plan_top<R>, put_tables<R>}
                                     : BatchEnvTable{sizeof(BatchPlan), end_top, plan_with_tables<R>, nullptr};
template <class R> constexpr BatchEnvTable top_table[] = {top_of<R>, top_of<R>}; // inverse, forward

void tear_down(BatchPlan& plan)
{
    BatchArena* const arena = plan.env.arena;
    plan.env.table->del(&plan.env);
    orvgArenaFree(arena, &plan, block(plan.env.table->size));
}

// The columns of one member of a team.
template <class R> i32 run_share(const Share& share, const Columns<R>& c, BatchArena* arena)
{
    const auto base = [](const BatchEnvList* node) -> const Base& { return *reinterpret_cast<Base*>(node->env); };
    const BatchEnvList& children = share.children;
    if (share.rule == 3) return compute_staged<R>(base(&children), c, arena);
    if (share.rule != 1 && share.rule != 2) return node_internal_error;
    const i64 filling = filling_registers<R>(c.count);
    const auto compute = share.rule == 1 ? compute_straight<R> : compute_split<R>;
    const i32 status = compute(base(&children), c.part(0, filling), arena);
    if (status != node_ok || filling == c.count) return status;
    return compute_staged<R>(base(children.next), c.part(filling, c.count - filling), arena);
}

template <class T> const T* only_child(const BatchEnvList& list)
{
    return list.next == nullptr ? reinterpret_cast<const T*>(list.env) : nullptr;
}

} // namespace

template <class R> i64 plan_bytes(const Problem& p)
{
    const ListSizes<R> sizes(factors_of(p.n));
    i64 bytes = before_blocks + block(sizeof(BatchPlan)) + 4 * block(sizeof(BatchChList)) +
                block(sizeof(BatchEnvList)) + block(sizeof(Division)) + block(sizeof(Share)) + block(sizeof(Base));
    for (const i64 size : sizes.of) bytes += orvgChList_add_mem(size, alignment);
    if (has_rest<R>(p.share_rule())) bytes += block(sizeof(Base)) + orvgEnvList_add_mem(1, alignment);
    return bytes;
}

template <class R> i64 thread_bytes(const Problem& p)
{
    const i64 rule = p.share_rule();
    i64 bytes = 0;
    if (rule == 2) bytes = room_of_split<R>(p.n, split_together<R>(p.n, p.columns));
    if (rule == 3) bytes = room_of_staged<R>(p.n, staged_together<R>(p.n, p.columns));
    if (has_rest<R>(rule)) bytes = max(bytes, room_of_staged<R>(p.n, lanes<R>));
    return before_blocks + bytes;
}

template <class R> i32 init(bool forward, void* memory, const Problem& p)
{
    if (memory == nullptr) return node_inconsistent;
    if (const i32 refused = p.refusal(); refused != node_ok) return refused;
    const BatchEnvTable& table = top_table<R>[forward];
    BatchArena* const arena = place_arena(memory);
    static_cast<Area*>(memory)->owned = 0;
    auto* const plan = make<BatchPlan>(arena, table);
    plan->apart = forward ? 1 : -1;
    plan->rows = p.rows, plan->length = p.n, plan->columns = p.columns, plan->form = p.form;
    plan->input_width = plan->output_width = p.width;
    for (BatchChList*& list : plan->lists) {
        list = static_cast<BatchChList*>(orvgArenaMalloc(arena, block(sizeof(BatchChList))));
        orvgChList___init__(list, arena, alignment);
    }
    plan->children = static_cast<BatchEnvList*>(orvgArenaMalloc(arena, block(sizeof(BatchEnvList))));
    orvgEnvList___init__(plan->children, arena, alignment);
    const i32 status = table.plan(&plan->env);
    if (status != node_ok) tear_down(*plan);
    else if (table.precomp != nullptr) table.precomp(&plan->env);
    return status;
}

template <class R> i32 init_alloc(bool forward, void** plan, const Problem& p)
{
    if (plan == nullptr) return node_inconsistent;
    if (const i32 refused = p.refusal(); refused != node_ok) return refused;
    void* const memory = orv_serv_malloc(plan_bytes<R>(p), alignment);
    if (memory == nullptr) return node_no_memory;
    const i32 status = init<R>(forward, memory, p);
    if (status != node_ok) orv_serv_free(memory);
    else static_cast<Area*>(memory)->owned = 1, *plan = memory;
    return status;
}

i32 end(void* memory)
{
    if (memory == nullptr) return node_inconsistent;
    tear_down(*reinterpret_cast<BatchPlan*>(first_block(memory)));
    if (static_cast<Area*>(memory)->owned != 0) orv_serv_free(memory);
    return node_ok;
}

template <class R> i32 run(bool forward, const cpx<R>* src, cpx<R>* dst, const BatchThread* ctx, const void* memory)
{
    if (src == nullptr || dst == nullptr || ctx == nullptr || memory == nullptr) return node_inconsistent;
    const i64 threads = ctx->threads, index = ctx->index;
    if (ctx->buffer == nullptr || index < 0 || index >= threads) return node_inconsistent;
    const auto& plan = *reinterpret_cast<const BatchPlan*>(first_block(memory));
    if (plan.env.table != &top_table<R>[forward]) return node_internal_error;
    const auto* const division = only_child<Division>(*plan.children);
    const auto* const share = division == nullptr ? nullptr : only_child<Share>(division->children);
    if (share == nullptr) return node_internal_error;

    BatchArena* const arena = place_arena(ctx->buffer);
    const i64 each = division->columns / threads, begin = index * each;
    const Columns<R> all{src, division->from, dst, division->to, division->columns};
    return run_share(*share, all.part(begin, index < threads - 1 ? each : division->columns - begin), arena);
}

#define PLANS(R)                                                                                                       \
    template i64 plan_bytes<R>(const Problem&);                                                                        \
    template i64 thread_bytes<R>(const Problem&);                                                                      \
    template i32 init<R>(bool, void*, const Problem&);                                                                 \
    template i32 init_alloc<R>(bool, void**, const Problem&);                                                          \
    template i32 run<R>(bool, const cpx<R>*, cpx<R>*, const BatchThread*, const void*);
PLANS(float)
PLANS(double)

} // namespace orv::dft::batch
