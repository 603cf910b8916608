// The end of building: entries become compressed rows, sorted, with one entry a place.
#include "compat/sparse/matrix.h"

namespace orv::sparseblas {
namespace {

// order := the numbers of n entries so that keys, all below limit, ascend; those of one key as `before` has them.
bool sort(const Array<int>& keys, std::size_t n, int limit, const int* before, Array<int>& order)
{
    Array<int> place;
    const auto rooms = static_cast<std::size_t>(limit) + 1;
    if (!place.reserve(rooms) || !order.reserve(n)) return false;
    for (std::size_t key = 0; key < rooms; ++key) place[key] = 0;
    for (std::size_t e = 0; e < n; ++e) ++place[static_cast<std::size_t>(keys[e]) + 1];
    for (std::size_t key = 1; key < rooms; ++key) place[key] += place[key - 1];
    for (std::size_t e = 0; e < n; ++e) {
        const int entry = before == nullptr ? static_cast<int>(e) : before[e];
        order[static_cast<std::size_t>(place[static_cast<std::size_t>(keys[static_cast<std::size_t>(entry)])]++)] =
            entry;
    }
    return true;
}

// Ones on the diagonal are entries like others from here on. No other stands there.
template <class T> bool add_ones(Matrix& a, std::size_t ones)
{
    const std::size_t n = a.count + ones;
    if (!a.row.reserve(n) || !a.col.reserve(n) || !a.values.reserve(n * sizeof(T))) return false;
    for (std::size_t i = 0; i < ones; ++i) {
        a.row[a.count + i] = a.col[a.count + i] = static_cast<int>(i);
        a.template value<T>()[a.count + i] = one<T>;
    }
    return true;
}

template <class T> int assemble(Matrix& a)
{
    const bool unit = a.diagonal == blas_unit_diag;
    const std::size_t ones = unit ? static_cast<std::size_t>(min(a.rows, a.cols)) : 0, n = a.count + ones;
    Array<int> by_column, by_row, col, start;
    Array<char> values;
    if (!add_ones<T>(a, ones) || !sort(a.col, n, a.cols, nullptr, by_column) ||
        !sort(a.row, n, a.rows, by_column.data(), by_row) || !col.reserve(n + 1) ||
        !values.reserve((n + 1) * sizeof(T)) || !start.reserve(static_cast<std::size_t>(a.rows) + 1))
        return refused;
    T* value = reinterpret_cast<T*>(values.data());
    std::size_t next = 0, e = 0;
    int diagonals = 0;
    for (int i = 0; i < a.rows; ++i) {
        const std::size_t begin = next;
        start[static_cast<std::size_t>(i)] = static_cast<int>(next);
        for (; e < n; ++e) {
            const auto entry = static_cast<std::size_t>(by_row[e]);
            if (a.row[entry] != i) break;
            const T v = a.template value<T>()[entry];
            if (next > begin && col[next - 1] == a.col[entry]) value[next - 1] += v;
            else col[next] = a.col[entry], value[next++] = v, diagonals += a.col[entry] == i;
        }
    }
    start[static_cast<std::size_t>(a.rows)] = static_cast<int>(next);
    a.count = next - ones, a.state = blas_valid_handle, a.has_diagonal = diagonals == a.rows;
    Array<int> nothing;
    a.row.take(nothing);
    a.col.take(col), a.values.take(values), a.start.take(start);
    return done;
}

int finish(Matrix* a)
{
    if (a == nullptr || a->state == blas_valid_handle) return refused;
    switch (a->type) {
    case 's':
        return assemble<float>(*a);
    case 'd':
        return assemble<double>(*a);
    case 'c':
        return assemble<cpx<float>>(*a);
    default:
        return assemble<cpx<double>>(*a);
    }
}

} // namespace
} // namespace orv::sparseblas

using namespace orv;
using namespace orv::sparseblas;

#define END(t, T)                                                                                                      \
    int BLAS_##t##uscr_end(int A) { return finish(matrix_of_type<T>(A)); }                                             \
    void blas_##t##uscr_end_(const int* a, int* istat) { *istat = finish(matrix_of_type<T>(*a)); }

extern "C" {
END(s, float)
END(d, double)
END(c, cpx<float>)
END(z, cpx<double>)
int BLAS_uscr_end(int A) { return finish(matrix_of(A)); }
void blas_uscr_end_(const int* a, int* istat) { *istat = finish(matrix_of(*a)); }
}
