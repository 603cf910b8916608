// Matrices in other formats, and their end.
#include "core/sparse/convert.h"

namespace orv::core::sparse {
namespace {

orv_status convert_as(const Wish& wish, char trans, const orv_sparse* a)
{
    if (const orv_status bad = refuse_operand(wish.name, 1, 2, trans, a)) return bad;
    const Op op = Op::of(trans);
    orv_sparse form{};
    if (const orv_status bad = form_of(wish.name, wish.position, wish.asked, *a, op.rows(*a), op.cols(*a), &form))
        return bad;
    return with_types(form, [&]<class T, class Int>() { return convert<T, Int>(wish, op, *a, form, {a}); });
}

} // namespace
} // namespace orv::core::sparse

using namespace orv::core::sparse;

orv_status orv_sparse_convert(char trans, const orv_sparse* a, orv_sparse* b)
{
    return convert_as({"orv_sparse_convert", 3, b}, trans, a);
}

orv_status orv_sparse_convert_sizes(char trans, const orv_sparse* a, orv_sparse* b)
{
    return convert_as({"orv_sparse_convert_sizes", 3, b, true}, trans, a);
}

void orv_sparse_free(orv_sparse* a)
{
    if (a == nullptr || a->memory == nullptr) return;
    orv_serv_free(a->memory);
    a->memory = nullptr;
    a->values = a->begin = a->end = a->row = a->col = nullptr;
    a->count = 0, a->has_diagonal = 0;
}
