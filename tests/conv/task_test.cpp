// Tasks: what they keep, what they refuse, and which kernel they run.
#include "frame/serv.h"
#include "tests/conv/problem.h"
#include "tests/conv/transforms.h"
#include "tests/support/probe.h"

namespace orv::test::convolution {
namespace {

namespace k = kernels::conv;

auto* newtask = kernel<k::newtask>();
auto* newtaskx = kernel<k::newtaskx>();
auto* edittask = kernel<k::edittask>();
auto* committask = kernel<k::committask>();
auto* copytask = kernel<k::copytask>();
auto* deletetask = kernel<k::deletetask>();
auto* exec = kernel<k::exec>();
auto* execx = kernel<k::execx>();
auto* getstatus = kernel<k::ccgetstatus>();
auto* setstatus = kernel<k::ccsetstatus>();

struct Task {
    ConvTask* task = nullptr;
    ~Task() { deletetask(&task); }
    ConvTask* operator->() const { return task; }
    operator ConvTask*() const { return task; }
};

// Its kind and precision by T; shapes of nx, ny and nz elements in each dimension.
template <class T> void make(Task& t, i32 job, i32 mode, i32 rank, i32 nx, i32 ny, i32 nz)
{
    const Numbers xs(7, nx), ys(7, ny), zs(7, nz);
    const i32 kind = is_complex<T> ? complex_kind : real_kind;
    const i32 precision = sizeof(real_t<T>) == 4 ? single_precision : double_precision;
    ASSERT_EQ(newtask(&t.task, job, 5, mode, kind, precision, rank, xs.data(), ys.data(), zs.data()), ok);
}

TEST(ConvTask, is_made_with_what_it_was_given_and_defaults)
{
    Numbers xs{3, 4}, ys{5, 6}, zs{7, 9}, stride{2, 10};
    double x[40];
    Task t;
    ProbeScope memory;
    ASSERT_EQ(newtaskx(&t.task, 9, 8, 7, 6, 5, 2, xs.data(), ys.data(), zs.data(), x, stride.data()), ok);
    EXPECT_EQ(memory->asked_alignments, std::vector<i64>{4096});
    xs = ys = zs = stride = {0, 0};
    EXPECT_EQ(t->status, 0);
    EXPECT_EQ(t->job, 9);
    EXPECT_EQ(t->method, 8);
    EXPECT_EQ(t->mode, 7);
    EXPECT_EQ(t->option, 0);
    EXPECT_EQ(t->kind, 6);
    EXPECT_EQ(t->data_precision, 5);
    EXPECT_EQ(t->internal_precision, 5);
    EXPECT_EQ(t->rank, 2);
    EXPECT_EQ(t->start, nullptr);
    EXPECT_EQ(t->decimation, nullptr);
    EXPECT_EQ(t->xshape, t->xshape_store);
    EXPECT_EQ(t->yshape[1], 6);
    EXPECT_EQ(t->zshape[0], 7);
    EXPECT_EQ(t->xstride[1], 10);
    EXPECT_EQ(t->xdata, x);
    EXPECT_EQ(t->committed, 0);
    EXPECT_EQ(t->private_data, nullptr);
}

TEST(ConvTask, keeps_missing_shapes_missing_and_is_refused_when_it_runs)
{
    Task t;
    ASSERT_EQ(newtask(&t.task, 1, 0, 1, real_kind, double_precision, 2, nullptr, nullptr, nullptr), ok);
    EXPECT_EQ(t->xshape, nullptr);
    EXPECT_EQ(t->zshape, nullptr);
    double a[4] = {};
    EXPECT_EQ(exec(t, a, nullptr, a, nullptr, a, nullptr), bad_xshape);
}

TEST(ConvTask, is_not_made_without_a_place_or_memory)
{
    EXPECT_EQ(newtask(nullptr, 1, 0, 1, 1, 1, 1, nullptr, nullptr, nullptr), null_argument);
    ConvTask* t = nullptr;
    ProbeScope memory;
    memory->fail_all = true;
    EXPECT_EQ(newtask(&t, 1, 0, 1, 1, 1, 1, nullptr, nullptr, nullptr), no_record_memory);
    EXPECT_EQ(t, nullptr);
}

TEST(ConvTask, that_is_none_is_refused_by_all)
{
    const i32 value = 1;
    Task t;
    EXPECT_EQ(edittask(nullptr, 3, &value), null_argument);
    EXPECT_EQ(committask(nullptr), null_argument);
    EXPECT_EQ(copytask(nullptr, t), null_argument);
    EXPECT_EQ(copytask(&t.task, nullptr), null_argument);
    EXPECT_EQ(deletetask(nullptr), null_argument);
    EXPECT_EQ(deletetask(&t.task), ok);
    EXPECT_EQ(exec(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), null_argument);
    EXPECT_EQ(execx(nullptr, nullptr, nullptr, nullptr, nullptr), null_argument);
    EXPECT_EQ(getstatus(nullptr), null_argument);
    EXPECT_EQ(setstatus(nullptr, 1), null_argument);
}

TEST(ConvTask, takes_edits_of_five_parameters_and_forgets_its_commitment_by_any)
{
    Task t;
    make<double>(t, 1, 1, 2, 3, 3, 3);
    const i32 value[] = {4, 5};
    for (i32 parameter = -1; parameter <= 21; ++parameter) {
        ASSERT_EQ(committask(t), ok);
        EXPECT_EQ(t->committed, 1);
        const bool taken = (parameter >= 3 && parameter <= 6) || parameter == 9;
        const i32 refusal = parameter >= 1 && parameter <= 19 ? read_only_parameter : unknown_parameter;
        EXPECT_EQ(edittask(t, parameter, value), taken ? i32{ok} : refusal) << parameter;
        EXPECT_EQ(t->committed, 0) << parameter;
        EXPECT_EQ(t->status, 0);
    }
    EXPECT_EQ(edittask(t, 99, value), -2211);
    EXPECT_EQ(edittask(t, 2, value), -2212);
    EXPECT_EQ(t->mode, 4);
    EXPECT_EQ(t->option, 4);
    EXPECT_EQ(t->internal_precision, 4);
    EXPECT_EQ(t->data_precision, double_precision);
    EXPECT_EQ(t->start, t->start_store);
    EXPECT_EQ(t->decimation, t->decimation_store);
    EXPECT_EQ(t->start[1], 5);
    EXPECT_EQ(t->decimation[0], 4);

    ASSERT_EQ(committask(t), ok);
    EXPECT_EQ(edittask(t, 3, nullptr), null_argument);
    EXPECT_EQ(t->committed, 0);
}

TEST(ConvTask, is_closed_by_a_failed_run_until_its_status_is_cleared)
{
    Task t, copy;
    make<double>(t, 1, 1, 1, 3, 3, 6);
    const double x[] = {1, 2, 3};
    double z[6];
    ASSERT_EQ(edittask(t, 6, Numbers{1}.data()), ok);
    EXPECT_EQ(exec(t, x, nullptr, x, nullptr, z, nullptr), bad_decimation); // a sixth output
    t->zshape_store[0] = 5;
    EXPECT_EQ(exec(t, x, nullptr, x, nullptr, z, nullptr), bad_decimation);
    EXPECT_EQ(getstatus(t), bad_decimation);
    EXPECT_EQ(committask(t), bad_decimation);
    t->committed = 1;
    EXPECT_EQ(edittask(t, 3, Numbers{2}.data()), bad_decimation);
    EXPECT_EQ(t->committed, 1);
    EXPECT_EQ(t->mode, 1);
    EXPECT_EQ(copytask(&copy.task, t), bad_decimation);
    EXPECT_EQ(copy.task, nullptr);
    EXPECT_EQ(setstatus(t, 0), bad_decimation);
    EXPECT_EQ(exec(t, x, nullptr, x, nullptr, z, nullptr), ok);
    EXPECT_EQ(std::vector(z, z + 5), (std::vector<double>{1, 4, 10, 12, 9}));
}

TEST(ConvTask, commits_itself_when_it_runs)
{
    Task t;
    make<double>(t, 1, 1, 1, 1, 1, 1);
    const double x = 3;
    double z;
    EXPECT_EQ(exec(t, &x, nullptr, &x, nullptr, &z, nullptr), ok);
    EXPECT_EQ(t->committed, 1);
    EXPECT_EQ(z, 9);
}

TEST(ConvTask, starts_at_the_first_lag_of_a_correlation_and_at_zero_of_a_convolution)
{
    const double x[] = {1, 2, 3}, y[] = {10, 20};
    double z;
    for (const i32 job : {2, 0, 77, 1}) {
        Task t;
        make<double>(t, job, 1, 1, 1, 1, 1);
        t->xshape_store[0] = 3, t->yshape_store[0] = 2;
        EXPECT_EQ(exec(t, x, nullptr, y, nullptr, &z, nullptr), ok);
        EXPECT_EQ(z, job == 1 ? 10 : 30) << job; // x[0]*y[0], or x[2]*y[0]
    }
}

// Which transforms a run asks for tells its route and whether sums are in single precision.
template <class T> std::string route_of(i32 mode, i32 rank, i32 internal, i32* status = nullptr)
{
    Task t;
    make<T>(t, 1, mode, rank, 2, 2, 3);
    if (internal != 0) edittask(t, 9, &internal);
    const std::vector<T> x(128, element<T>::make(1));
    std::vector<T> z(3 * 3 * 3);
    AskedScope asked;
    const i32 result = exec(t, x.data(), nullptr, x.data(), nullptr, z.data(), nullptr);
    if (status != nullptr) *status = result;
    if (!asked->lines.empty()) return "line of " + std::to_string(8 * asked->lines[0].bytes);
    return asked->calls.empty() ? "direct" : asked->calls[0];
}

TEST(ConvTask, runs_directly_in_mode_one_alone)
{
    for (const i32 mode : {0, 2, -1, 3}) {
        EXPECT_EQ(route_of<double>(mode, 1, 0), "line of 64");
        EXPECT_EQ(route_of<float>(mode, 1, 0), "line of 32");
        EXPECT_EQ(route_of<cpx<float>>(mode, 2, 0), "create 32 4 4");
    }
    for (const i32 rank : {1, 2, 3}) EXPECT_EQ(route_of<double>(1, rank, 0), "direct");
}

TEST(ConvTask, sums_in_the_precision_of_its_fields)
{
    EXPECT_EQ(route_of<float>(2, 1, single_precision), "line of 32");
    EXPECT_EQ(route_of<float>(2, 1, double_precision), "line of 64");
    EXPECT_EQ(route_of<cpx<float>>(2, 1, 7), "line of 64");
    EXPECT_EQ(route_of<cpx<double>>(2, 1, 0), "line of 64");
    i32 status = 0;
    for (const i32 mode : {1, 2}) {
        route_of<double>(mode, 1, single_precision, &status);
        EXPECT_EQ(status, no_kernel);
        route_of<cpx<double>>(mode, 1, single_precision, &status);
        EXPECT_EQ(status, no_kernel);
        route_of<double>(mode, 2, single_precision, &status);
        EXPECT_EQ(status, ok);
    }
}

TEST(ConvTask, of_singles_without_a_decimation_runs_the_kernel_that_has_none)
{
    // It is the only one that fills outputs beyond the last.
    const float x[] = {1, 2};
    float z[] = {7, 7, 7, 7, 7};
    const i32 step = 1;
    Task t, decimated, of_double;
    make<float>(t, 1, 1, 1, 2, 2, 5);
    EXPECT_EQ(exec(t, x, nullptr, x, nullptr, z, nullptr), ok);
    EXPECT_EQ(std::vector(z, z + 5), (std::vector<float>{1, 4, 4, 0, 0}));
    make<float>(decimated, 1, 1, 1, 2, 2, 5);
    edittask(decimated, 6, &step);
    EXPECT_EQ(exec(decimated, x, nullptr, x, nullptr, z, nullptr), bad_decimation);
    make<float>(of_double, 1, 1, 1, 2, 2, 5);
    edittask(of_double, 9, Numbers{2}.data());
    EXPECT_EQ(exec(of_double, x, nullptr, x, nullptr, z, nullptr), bad_decimation);
}

TEST(ConvTask, of_every_shape_and_type_agrees_with_exact_sums)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            Random random(11);
            const int rank = m.line ? 1 : 3;
            const Problem p = random_problem(random, m.correlates, rank, 6);
            const Arrays<T> a(p, 2);
            Task t;
            const i32 precision = sizeof(real_t<T>) == 4 ? single_precision : double_precision;
            ASSERT_EQ(newtaskx(&t.task, m.correlates ? 2 : 1, 0, m.direct ? 1 : 2, is_complex<T> ? 2 : 1, precision,
                               rank, p.nx.data(), p.ny.data(), p.nz.data(), a.x.data(), p.xs.data()),
                      ok);
            const i32 sums = sizeof(real_t<I>) == 4 ? single_precision : double_precision;
            edittask(t, 5, p.start.data()), edittask(t, 6, p.step.data()), edittask(t, 9, &sums);
            ASSERT_EQ(execx(t, a.y.data(), p.ys.data(), a.z.data(), p.zs.data()), ok) << m.name;
            expect_exact<T, I>(m, p, a);
        });
    }
}

// What a copy needs to have for itself: counted, and refused, by functions of a program's own.
void* some_memory() { return orv_serv_malloc(16, 16); }
int copied, freed;
i32 answer;
i32 copy_private(ConvTask* copy, void** data)
{
    ++copied;
    EXPECT_EQ(data, &copy->private_data);
    *data = some_memory();
    return answer;
}
i32 free_private(ConvTask*)
{
    ++freed;
    return answer;
}

TEST(ConvTask, copies_have_their_own_arrays)
{
    Task t, copy;
    make<double>(t, 2, 1, 2, 3, 4, 5);
    edittask(t, 5, Numbers{-1, -2}.data()), edittask(t, 6, Numbers{1, 2}.data()), edittask(t, 4, Numbers{8}.data());
    committask(t);
    ASSERT_EQ(copytask(&copy.task, t), ok);
    EXPECT_EQ(copy->method, 5);
    EXPECT_EQ(copy->option, 8);
    EXPECT_EQ(copy->committed, 1);
    EXPECT_EQ(copy->start, copy->start_store);
    EXPECT_EQ(copy->decimation, copy->decimation_store);
    EXPECT_EQ(copy->xshape, copy->xshape_store);
    EXPECT_EQ(copy->yshape, copy->yshape_store);
    EXPECT_EQ(copy->zshape, copy->zshape_store);
    EXPECT_EQ(copy->xstride, nullptr);
    edittask(t, 5, Numbers{0, 0}.data());
    EXPECT_EQ(copy->start[1], -2);
    EXPECT_EQ(copy->yshape[1], 4);
    ProbeScope memory;
    memory->fail_all = true;
    ConvTask* other = nullptr;
    EXPECT_EQ(copytask(&other, t), no_record_memory);
    EXPECT_EQ(other, nullptr);
}

TEST(ConvTask, copies_and_frees_what_it_prepared_by_functions_of_its_own)
{
    ProbeScope memory;
    Task t;
    make<double>(t, 1, 1, 1, 1, 1, 1);
    t->private_data = some_memory(), t->private_copy = copy_private, t->private_free = free_private;
    copied = freed = 0, answer = 0;
    ConvTask* copy = nullptr;
    ASSERT_EQ(copytask(&copy, t), ok);
    EXPECT_EQ(copied, 1);
    EXPECT_NE(copy->private_data, t->private_data);
    EXPECT_EQ(deletetask(&copy), ok);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(memory->live, 2);

    answer = 5;
    const i64 before = memory->live;
    EXPECT_EQ(copytask(&copy, t), copy_failed);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(memory->live, before + 1); // what the function took
    EXPECT_EQ(deletetask(&t.task), delete_failed);
    EXPECT_EQ(t.task, nullptr);
    EXPECT_EQ(memory->live, 1);
    free_what_is_left();
}

TEST(ConvTask, that_cannot_free_what_it_prepared_is_gone_all_the_same)
{
    ProbeScope memory;
    Task t;
    make<double>(t, 1, 1, 1, 1, 1, 1);
    t->private_data = some_memory();
    EXPECT_EQ(deletetask(&t.task), delete_failed);
    EXPECT_EQ(t.task, nullptr);
    EXPECT_EQ(memory->live, 0);
}

} // namespace
} // namespace orv::test::convolution
