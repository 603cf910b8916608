// The complex product by three real ones instead of four: C := alpha*op(A)*op(B) + beta*C.
//
// With P1 = Re(A)*Re(B), P2 = Im(A)*Im(B), P3 = (Re(A) + Im(A))*(Re(B) + Im(B)), the product is (P1 - P2) + i*((P3 -
// P1) - P2). It is as exact as a product of norms, not of elements: where the parts differ much in size, the smaller
// one loses digits. A beta of 0 leaves C unread.
//
// Sources: N. J. Higham, Stability of a Method for Multiplying Complex Matrices with Three Real Matrix Multiplications,
// SIAM J. Matrix Anal. Appl. 13 (1992) 681-687.
#include "blas/gemm/blocks.h"
#include "blas/gemm/by_symbol.h"
#include "frame/serv.h"

namespace orv::gemm {

namespace {

constexpr char name[] = "xgemm3m";
constexpr i64 depth_block = 128, block = 1000; // rows of A, columns of B
constexpr i64 least_side = 9;

// op(X), rows by columns, in three planes of columns side by side: real parts, imaginary parts, their sums.
template <bool transposed, bool conjugated, class R>
void split(i64 rows, i64 columns, const cpx<R>* x, i64 ldx, R* planes, i64 plane)
{
    for (i64 j = 0; j < columns; ++j)
        for (i64 i = 0; i < rows; ++i) {
            const cpx<R> e = transposed ? x[j + i * ldx] : x[i + j * ldx];
            const R im = conjugated ? -e.im : e.im;
            R* const at = planes + i + j * rows;
            at[0] = e.re, at[plane] = im, at[2 * plane] = e.re + im;
        }
}
template <class R> void split(char op, i64 rows, i64 columns, const cpx<R>* x, i64 ldx, R* planes, i64 plane)
{
    if (is_plain(op)) split<false, false>(rows, columns, x, ldx, planes, plane);
    else if (is_conjugated(op)) split<true, true>(rows, columns, x, ldx, planes, plane);
    else split<true, false>(rows, columns, x, ldx, planes, plane);
}

// C(0:m, 0:n) := alpha*(P1 - P2, (P3 - P1) - P2) + beta*C.
template <class R> void combine(i64 m, i64 n, cpx<R> alpha, const R* planes, i64 plane, cpx<R> beta, cpx<R>* c, i64 ldc)
{
    const bool adds = beta != zero<cpx<R>>;
    for (i64 j = 0; j < n; ++j, planes += m, c += ldc)
        for (i64 i = 0; i < m; ++i) {
            const R p1 = planes[i], p2 = planes[i + plane], p3 = planes[i + 2 * plane];
            const R re = p1 - p2, im = (p3 - p1) - p2;
            cpx<R> sum = {alpha.re * re - alpha.im * im, re * alpha.im + im * alpha.re};
            if (adds)
                sum = {sum.re + beta.re * c[i].re - beta.im * c[i].im, sum.im + c[i].re * beta.im + c[i].im * beta.re};
            c[i] = sum;
        }
}

// Three planes for blocks of A and of B, and for a block of rows of C.
template <class R> struct Planes {
    R *a, *b, *c;

    explicit Planes(i64 n)
        : a(take(depth_block * block)), b(a != nullptr ? take(depth_block * block) : nullptr),
          c(b != nullptr ? take(block * n) : nullptr)
    {
    }
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;
    ~Planes()
    {
        R* const areas[] = {c, b, a};
        for (R* const p : areas)
            if (p != nullptr) orv_serv_deallocate(p);
    }

private:
    static R* take(i64 elements)
    {
        void* const p = orv_serv_allocate(3 * elements * i64(sizeof(R)), 128);
        return orv_serv_check_ptr(p, name, sizeof name - 1) == 0 ? static_cast<R*>(p) : nullptr;
    }
};

template <class R> void multiply(const Product<cpx<R>>& x, const Planes<R>& planes)
{
    constexpr char n = 'N';
    constexpr i64 plane = depth_block * block;
    const i64 c_plane = block * x.n;
    for (i64 i = 0; i < x.m; i += block) {
        const i64 rows = min(x.m - i, block);
        for (i64 p = 0; p < x.k; p += depth_block) {
            const i64 depth = min(x.k - p, depth_block);
            const R beta = p > 0;
            split(x.transa, rows, depth, corner(x.a, x.lda, x.transa, i, p), x.lda, planes.a, plane);
            for (i64 j = 0; j < x.n; j += block) {
                const i64 columns = min(x.n - j, block);
                split(x.transb, depth, columns, corner(x.b, x.ldb, x.transb, p, j), x.ldb, planes.b, plane);
                for (int part = 0; part < 3; ++part)
                    whole_product<R>(&n, &n, &rows, &columns, &depth, &one<R>, planes.a + part * plane, &rows,
                                     planes.b + part * plane, &depth, &beta, planes.c + part * c_plane + j * rows,
                                     &rows);
            }
        }
        combine(rows, x.n, x.alpha, planes.c, c_plane, x.beta, x.c + i, x.ldc);
    }
}

template <class R> bool by_three_products(const Product<cpx<R>>& x)
{
    if (x.m < least_side || x.n < least_side || x.k < least_side || x.alpha == zero<cpx<R>>) return false;
    best_kernel<R>(); // asks for the processor, before memory is asked for: a caller sees the order of every product
    const Planes<R> planes(x.n);
    if (planes.c == nullptr) return false;
    multiply(x, planes);
    return true;
}

template <class R> void product(ORV_GEMM_ARGUMENTS(cpx<R>))
{
    if (*m <= 0 || *n <= 0) return;
    if (!by_three_products(product_of(ORV_GEMM_PASS))) whole_product<cpx<R>>(ORV_GEMM_PASS);
}

} // namespace

#define COPY(symbol, R, op)                                                                                            \
    ORV_EXPORT void BLAS(symbol)(const i64* rows, const i64* columns, const cpx<R>* x, const i64* ldx, R* planes,      \
                                 const i64* plane)                                                                     \
    {                                                                                                                  \
        split(op, *rows, *columns, x, *ldx, planes, *plane);                                                           \
    }
#define THREE_PRODUCTS(t, R)                                                                                           \
    COPY(t##gemm3m_copyan, R, 'N')                                                                                     \
    COPY(t##gemm3m_copyat, R, 'T')                                                                                     \
    COPY(t##gemm3m_copyac, R, 'C')                                                                                     \
    COPY(t##gemm3m_copybn, R, 'N')                                                                                     \
    COPY(t##gemm3m_copybt, R, 'T')                                                                                     \
    COPY(t##gemm3m_copybc, R, 'C')                                                                                     \
    ORV_EXPORT void BLAS(x##t##gemm3m)(ORV_GEMM_ARGUMENTS(cpx<R>)) { product<R>(ORV_GEMM_PASS); }

THREE_PRODUCTS(c, float)
THREE_PRODUCTS(z, double)

} // namespace orv::gemm
