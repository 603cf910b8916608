// Tasks: made, changed, copied and ended. Nothing is looked at here but the status; that is for kernels to do.
#include "frame/kernels/conv.h"
#include "frame/serv.h"

namespace orv::conv {
namespace {

constexpr i64 page = 4096;

ConvTask* allocate_task() { return static_cast<ConvTask*>(orv_serv_malloc(sizeof(ConvTask), page)); }

// A task's own copy of an array that may be missing. Ranks beyond the stores are for kernels to refuse.
const i32* keep(i32* store, const i32* array, i32 rank)
{
    if (array == nullptr) return nullptr;
    for (i32 d = 0; d < rank && d < most_dimensions; ++d) store[d] = array[d];
    return store;
}

Status edit(ConvTask& task, i32 parameter, const i32* value)
{
    switch (parameter) {
    case mode_parameter:
        return task.mode = *value, ok;
    case option_parameter:
        return task.option = *value, ok;
    case start_parameter:
        return task.start = keep(task.start_store, value, task.rank), ok;
    case decimation_parameter:
        return task.decimation = keep(task.decimation_store, value, task.rank), ok;
    case internal_precision_parameter:
        return task.internal_precision = *value, ok;
    default:
        return parameter >= 1 && parameter <= 19 ? read_only_parameter : unknown_parameter;
    }
}

} // namespace

ORV_EXPORT i32 CONV(newtaskx)(ConvTask** task, i32 job, i32 method, i32 mode, i32 kind, i32 precision, i32 rank,
                              const i32* xshape, const i32* yshape, const i32* zshape, const void* x,
                              const i32* xstride)
{
    if (task == nullptr) return null_argument;
    ConvTask* const t = allocate_task();
    if (t == nullptr) return no_record_memory;
    *t = {};
    t->job = job, t->method = method, t->mode = mode;
    t->kind = kind, t->data_precision = t->internal_precision = precision;
    t->rank = rank;
    t->xshape = keep(t->xshape_store, xshape, rank);
    t->yshape = keep(t->yshape_store, yshape, rank);
    t->zshape = keep(t->zshape_store, zshape, rank);
    t->xstride = keep(t->xstride_store, xstride, rank);
    t->xdata = x;
    CONV(ccsetstatus)(t, ok);
    *task = t;
    return ok;
}

ORV_EXPORT i32 CONV(newtask)(ConvTask** task, i32 job, i32 method, i32 mode, i32 kind, i32 precision, i32 rank,
                             const i32* xshape, const i32* yshape, const i32* zshape)
{
    return CONV(newtaskx)(task, job, method, mode, kind, precision, rank, xshape, yshape, zshape, nullptr, nullptr);
}

ORV_EXPORT i32 CONV(edittask)(ConvTask* task, i32 parameter, const i32* value)
{
    if (task == nullptr) return null_argument;
    if (task->status != ok) return task->status;
    task->committed = 0; // also where the edit is refused
    return value == nullptr ? null_argument : edit(*task, parameter, value);
}

ORV_EXPORT i32 CONV(committask)(ConvTask* task)
{
    if (task == nullptr) return null_argument;
    if (task->status != ok) return task->status;
    task->committed = 1;
    return ok;
}

ORV_EXPORT i32 CONV(copytask)(ConvTask** copy, const ConvTask* source)
{
    if (copy == nullptr || source == nullptr) return null_argument;
    if (source->status != ok) return source->status;
    ConvTask* const t = allocate_task();
    if (t == nullptr) return no_record_memory;
    *t = *source; // and its own arrays in place of the source's
    t->start = keep(t->start_store, source->start, t->rank);
    t->decimation = keep(t->decimation_store, source->decimation, t->rank);
    t->xshape = keep(t->xshape_store, source->xshape, t->rank);
    t->yshape = keep(t->yshape_store, source->yshape, t->rank);
    t->zshape = keep(t->zshape_store, source->zshape, t->rank);
    t->xstride = keep(t->xstride_store, source->xstride, t->rank);
    if (t->private_data != nullptr && (t->private_copy == nullptr || t->private_copy(t, &t->private_data) != ok)) {
        orv_serv_free(t);
        return copy_failed;
    }
    *copy = t;
    return ok;
}

ORV_EXPORT i32 CONV(deletetask)(ConvTask** task)
{
    if (task == nullptr) return null_argument;
    ConvTask* const t = *task;
    if (t == nullptr) return ok;
    i32 status = ok;
    if (t->private_data != nullptr) {
        status = t->private_free == nullptr ? i32{no_private_free} : t->private_free(t);
        orv_serv_free(t->private_data);
        t->private_data = nullptr;
    }
    orv_serv_free(t);
    *task = nullptr;
    return status == ok ? ok : delete_failed;
}

ORV_EXPORT i32 CONV(ccgetstatus)(const ConvTask* task) { return task == nullptr ? null_argument : task->status; }

ORV_EXPORT i32 CONV(ccsetstatus)(ConvTask* task, i32 status)
{
    if (task == nullptr) return null_argument;
    const i32 before = task->status;
    task->status = status;
    return before;
}

} // namespace orv::conv
