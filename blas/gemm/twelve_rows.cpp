// The product on panels of twelve rows of A and four columns of B: xdgemm_bdz, and xdgemm_hi_thr_bdz with shallower
// blocks. C := C + alpha*op(A)*op(B).
//
// A beta other than 1 asks a slot for the scaling of C that is empty here: C is not scaled, and a caller that wants it
// scaled does so before.
//
// Packed A: panels of 12 rows, element (r, p) at p*12 + r; packed B: panels of 4 columns, element (p, c) at p*4 + c; an
// odd depth is padded with a step of zeros. Rows and columns that fill no panel are not packed: rows go the plain way,
// columns are products of a matrix and a vector.
#include "blas/gemm/direct.h"
#include "blas/gemm/driver.h"
#include "blas/gemm/pack.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::gemm {

// Where a kernel works: C(0:m, 0:n), and the depth of the panels.
struct Patch {
    double* c;
    i64 ldc, m, n, k;
};

namespace {

constexpr i64 row_unit = 12, column_unit = 4, depth_unit = 2;
constexpr char name[] = "xdgemm";

// Fills those block sizes that are 0. Blocks are at most `deep` steps deep; up to twice that, a product splits evenly.
void block_sizes(i64 deep, i64 m, i64 n, i64 k, i64* mb, i64* nb, i64* kb, i64 m_unit, i64 n_unit, i64 k_unit)
{
    constexpr i64 most_rows = 504, least_depth = 128, most_columns = 5000;
    if (*kb == 0)
        *kb = k < deep                   ? max(round_up(k, k_unit), least_depth)
              : k > deep && k < 2 * deep ? round_up(k / 2, k_unit)
                                         : deep;
    if (*mb == 0) *mb = min(round_up(m, m_unit), most_rows);
    if (*nb == 0) *nb = min(max(n, n_unit), most_columns);
}

template <Source order, int width, class Op>
void pack(i64 n, i64 k, const double* source, i64 ld, double* panel, const Op& op)
{
    const i64 padded = round_up(k, depth_unit);
    for (i64 j = 0; j + width <= n; j += width, panel += padded * width) {
        const double* from = source + source_offset<order>(j, 0, ld);
        i64 p = 0;
        for (; p + group <= k; p += group)
            pack_group<order, width, false>(from + source_offset<order>(0, p, ld), ld, panel + p * width, op);
        for (; p < padded; ++p)
            for (int c = 0; c < width; ++c)
                store_first<1>(panel + p * width + c,
                               p < k ? op(load_first<1>(from + source_offset<order>(c, p, ld))) : zeros<double>());
    }
}

template <Source order> void pack_a(i64 m, i64 k, const double* a, i64 lda, double* panels, double alpha)
{
    pack<order, row_unit>(m, k, a, lda, panels, Scaled<double, false>{factor<double>(alpha)});
}
template <Source order> void pack_b(i64 k, i64 n, const double* b, i64 ldb, double* panels)
{
    pack<order, column_unit>(n, k, b, ldb, panels, Copied<double, false>{});
}

// A panel of B, 4 columns, stays in the first-level cache while all panels of A pass.
void multiply(const Patch& patch, const double* a, const double* b)
{
    const i64 depth = round_up(patch.k, depth_unit);
    for (i64 j = 0; j < patch.n; j += column_unit, b += depth * column_unit) {
        const double* x = a;
        for (i64 i = 0; i < patch.m; i += row_unit, x += depth * row_unit)
            direct<double, RowLayout::adjacent, Alpha::absent>(row_unit, column_unit,
                                                               {.k = depth,
                                                                .x = x,
                                                                .ldx = row_unit,
                                                                .y = b,
                                                                .y_step = column_unit,
                                                                .y_column = 1,
                                                                .c = patch.c + i + j * patch.ldc,
                                                                .c_row = 1,
                                                                .c_column = patch.ldc,
                                                                .conj_x = false,
                                                                .conj_y = false,
                                                                .replaces = false,
                                                                .alpha = factor<double>(1)});
    }
}

} // namespace

ORV_EXPORT void BLAS(dgemm_blk_info_bdz)(const i64* m, const i64* n, const i64* k, i64* mb, i64* nb, i64* kb,
                                         i64 m_unit, i64 n_unit, i64 k_unit)
{
    block_sizes(256, *m, *n, *k, mb, nb, kb, m_unit, n_unit, k_unit);
}
ORV_EXPORT void BLAS(dgemm_blk_info_hi_thr_bdz)(const i64* m, const i64* n, const i64* k, i64* mb, i64* nb, i64* kb,
                                                i64 m_unit, i64 n_unit, i64 k_unit)
{
    block_sizes(80, *m, *n, *k, mb, nb, kb, m_unit, n_unit, k_unit);
}

// One block for both areas, each on a page boundary: handle is what is to be given back. Nothing if any size is 0.
ORV_EXPORT void BLAS(dgemm_getbufs_bdz)(const i64* mb, const i64* nb, const i64* kb, void** handle, double** a,
                                        double** b)
{
    constexpr i64 page = 4096, margin = 0x4200;
    *handle = nullptr, *a = *b = nullptr;
    if (*mb == 0 || *nb == 0 || *kb == 0) return;
    *handle = orv_serv_allocate((*mb + *nb) * *kb * i64(sizeof(double)) + margin, 128);
    if (*handle == nullptr) return;
    const auto next_page = [](double* p) { return p + (-reinterpret_cast<u64>(p) & (page - 1)) / sizeof(double); };
    *a = next_page(static_cast<double*>(*handle));
    *b = next_page(*a + *mb * *kb);
}
ORV_EXPORT void BLAS(dgemm_freebufs_bdz)(void* handle)
{
    if (handle != nullptr) orv_serv_deallocate(handle);
}

#define PACK_A(symbol, order)                                                                                          \
    ORV_EXPORT void BLAS(symbol)(const i64* m, const i64* k, const double* a, const i64* lda, double* panels,          \
                                 const double* alpha)                                                                  \
    {                                                                                                                  \
        pack_a<Source::order>(*m, *k, a, *lda, panels, *alpha);                                                        \
    }
#define PACK_B(symbol, order)                                                                                          \
    ORV_EXPORT void BLAS(symbol)(const i64* k, const i64* n, const double* b, const i64* ldb, double* panels)          \
    {                                                                                                                  \
        pack_b<Source::order>(*k, *n, b, *ldb, panels);                                                                \
    }
PACK_A(dgemm_copyan_bdz, adjacent)
PACK_A(dgemm_copyat_bdz, across)
PACK_B(dgemm_copybn_bdz, across)
PACK_B(dgemm_copybt_bdz, adjacent)

ORV_EXPORT void BLAS(dgemm_kernel_bdz)(const Patch* patch, const double* a, const double* b) { multiply(*patch, a, b); }

namespace {

using namespace kernels::blas; // called by their symbols

void in_panels(const Product<double>& x, i64 mb, i64 nb, i64 kb, double* a_panels, double* b_panels)
{
    const bool na = is_plain(x.transa), nb_plain = is_plain(x.transb);
    const auto copy_a = na ? pack_a<Source::adjacent> : pack_a<Source::across>;
    const auto copy_b = nb_plain ? pack_b<Source::across> : pack_b<Source::adjacent>;
    const i64 rows = x.m / row_unit * row_unit, columns = x.n / column_unit * column_unit;
    nb = nb / column_unit * column_unit;

    for (i64 j = 0; j < columns; j += nb)
        for (i64 p = 0; p < x.k; p += kb) {
            const i64 width = min(columns - j, nb), depth = min(x.k - p, kb);
            const double* const b = corner(x.b, x.ldb, x.transb, p, j);
            copy_b(depth, width, b, x.ldb, b_panels);
            for (i64 i = 0; i < rows; i += mb) {
                const i64 height = min(rows - i, mb);
                copy_a(height, depth, corner(x.a, x.lda, x.transa, i, p), x.lda, a_panels, x.alpha);
                multiply({x.c + i + j * x.ldc, x.ldc, height, width, depth}, a_panels, b_panels);
            }
            if (rows < x.m)
                plain<double>({x.transa, x.transb, x.m - rows, width, depth, x.alpha,
                               corner(x.a, x.lda, x.transa, rows, p), x.lda, b, x.ldb, 1, x.c + rows + j * x.ldc,
                               x.ldc});
        }

    constexpr i64 unit = 1;
    for (i64 j = columns; j < x.n; ++j) BLAS(xdgemv)
    (&x.transa, na ? &x.m : &x.k, na ? &x.k : &x.m, &x.alpha, x.a, &x.lda, corner(x.b, x.ldb, x.transb, 0, j),
     nb_plain ? &unit : &x.ldb, &one<double>, x.c + j * x.ldc, &unit);
}

void product(Product<double> x, BlkInfo& sizes)
{
    if (x.beta != 1) BLAS(dgemm_mscale_brc)(), x.beta = 1;
    if (x.alpha == 0) return;
    if (x.m < row_unit || x.n < column_unit || x.k < depth_unit) return plain(x);

    i64 mb = 0, nb = 0, kb = 0;
    sizes(&x.m, &x.n, &x.k, &mb, &nb, &kb, row_unit, column_unit, depth_unit);
    void* handle;
    double *a, *b;
    BLAS(dgemm_getbufs_bdz)(&mb, &nb, &kb, &handle, &a, &b);
    if (orv_serv_check_ptr(handle, name, sizeof name - 1) != 0) return plain(x);
    in_panels(x, mb, nb, kb, a, b);
    BLAS(dgemm_freebufs_bdz)(handle);
}

} // namespace

#define TWELVE_ROWS(symbol, sizes)                                                                                     \
    ORV_EXPORT void BLAS(symbol)(ORV_GEMM_ARGUMENTS(double)) { product(product_of(ORV_GEMM_PASS), BLAS(sizes)); }
TWELVE_ROWS(xdgemm_bdz, dgemm_blk_info_bdz)
TWELVE_ROWS(xdgemm_hi_thr_bdz, dgemm_blk_info_hi_thr_bdz)

// The plain way under this variant's names.
ORV_EXPORT void BLAS(dgemm_pst_brc)(ORV_GEMM_ARGUMENTS(double)) { plain(product_of(ORV_GEMM_PASS)); }
ORV_EXPORT void BLAS(sgemm_pst_brc)(ORV_GEMM_ARGUMENTS(float)) { plain(product_of(ORV_GEMM_PASS)); }

} // namespace orv::gemm
