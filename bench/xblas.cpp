// Extended precision: sums and products in plain loops and in extra precision, against the loops of loops.cpp.
#include "bench/case.h"

namespace orv::bench {
namespace {

constexpr i64 no_conj = 192, no_trans = 111, trans = 112, upper = 121, plain = 211, extra = 214;

Case make(char type, const char* op, i64 prec, const char* variant, i64 n, double products)
{
    Case c{std::string("blas_") + type + op + "_x", std::string(prec == extra ? "extra" : "plain") + variant, n, type};
    c.work = 2 * products;
    c.unit = "GFLOP/s"; // one multiplication and one addition a product, whatever they cost
    c.roundings = c.magnitude = static_cast<double>(2 * n + 4);
    return c;
}

Case dot(char type, i64 prec, i64 n)
{
    Case c = make(type, "dot", prec, "", n, static_cast<double>(n));
    c.integer(no_conj).integer(n).scalar(0.5, 0).vector(n, 1, Use::read).scalar(0.5, 0).vector(n, 1, Use::read);
    return c.operand(1, Use::updated).integer(prec);
}
Case gemv(char type, i64 prec, i64 op, i64 n)
{
    Case c = make(type, "gemv", prec, op == trans ? " T" : " N", n, static_cast<double>(n * n));
    c.integer(op).integer(n).integer(n).scalar(0.5, 0).matrix(n, n, Use::read).vector(n, 1, Use::read);
    return c.scalar(0.5, 0).vector(n, 1, Use::updated).integer(prec);
}
Case symv(char type, i64 prec, i64 n)
{
    Case c = make(type, "symv", prec, "", n, static_cast<double>(n * n));
    c.integer(upper).integer(n).scalar(0.5, 0).matrix(n, n, Use::read).vector(n, 1, Use::read);
    return c.scalar(0.5, 0).vector(n, 1, Use::updated).integer(prec);
}
Case gemm(char type, i64 prec, i64 n)
{
    Case c = make(type, "gemm", prec, "", n, static_cast<double>(n * n * n));
    c.integer(no_trans).integer(no_trans).integer(n).integer(n).integer(n).scalar(0.5, 0);
    c.matrix(n, n, Use::read).matrix(n, n, Use::read).scalar(0.5, 0).matrix(n, n, Use::updated);
    return c.integer(prec);
}

} // namespace

std::vector<Case> extended_cases()
{
    std::vector<Case> cases;
    for (const char type : {'s', 'd'})
        for (const i64 prec : {plain, extra}) {
            for (const i64 n : {10, 100, 1000, 10'000}) cases.push_back(dot(type, prec, n));
            for (const i64 n : {10, 100, 400}) {
                cases.push_back(gemv(type, prec, no_trans, n));
                cases.push_back(gemv(type, prec, trans, n));
                cases.push_back(symv(type, prec, n));
            }
            for (const i64 n : {4, 10, 50, 100, 200}) cases.push_back(gemm(type, prec, n));
        }
    return cases;
}

} // namespace orv::bench
