// Vectors, dense and sparse.
#include "cli/verify/setting.h"

namespace orv::verify {
namespace {

// Roundings of a product of two numbers, complex or not, of a sum of two of them, and of a reserve of one more.
constexpr double elementwise = 8;

View x_of(Setting& s) { return s.vector("x", s.size("n"), "incx"); }
View y_of(Setting& s) { return s.vector("y", s.size("n"), "incy"); }
// Vectors that are only read may be one element, met n times.
View read_only(Setting& s, const char* name) { return s.vector(name, s.size("n"), std::string("inc") + name, true); }

Plan axpy(Setting& s)
{
    const View x = read_only(s, "x"), y = y_of(s);
    return {{{after(y), {{s.scalar("alpha"), op(x)}, {s.scalar("beta"), op(y)}}, elementwise}}};
}
Plan scal(Setting& s)
{
    const View x = x_of(s);
    return {{{after(x), {{s.scalar("alpha"), op(x)}}, elementwise}}};
}
Plan copy(Setting& s) { return {{{after(y_of(s)), {{{1, 0}, op(read_only(s, "x"))}}}}}; }
Plan swap(Setting& s)
{
    const View x = x_of(s), y = y_of(s);
    return {{{after(x), {{{1, 0}, op(y)}}}, {after(y), {{{1, 0}, op(x)}}}}};
}

template <char left> Plan dot(Setting& s)
{
    const View x = read_only(s, "x"), y = read_only(s, "y");
    return {{{after(s.element("result")), {{{1, 0}, op(x, left), op(y)}}, roundings_of_sum(x.rows)}}};
}
// Floats, summed in double.
Plan wide_dot(Setting& s)
{
    Plan p = dot<'t'>(s);
    if (s.has("sb")) p.equations[0].terms.push_back({s.scalar("sb"), ones(1)});
    p.work = 'd';
    return p;
}
// result^2 = sum of squares; an error of a square is twice that of its root.
Plan nrm2(Setting& s)
{
    const View x = x_of(s), r = s.element("result");
    const Operand root = after(r);
    return {{{{}, {{{1, 0}, op(x, 'c'), op(x)}, {{-1, 0}, root, root}}, roundings_of_sum(x.rows)}}};
}
Plan asum(Setting& s)
{
    const View x = x_of(s);
    Operand sizes = op(x, 'a');
    return {{{after(s.element("result")), {{{1, 0}, ones(1, x.rows), sizes}}, roundings_of_sum(2 * x.rows)}}};
}
template <int extreme> Plan position(Setting& s)
{
    if (s.stride("incx") < 1) throw Mistake("amax and amin want incx= above 0");
    Plan p{{{{}, {{{1, 0}, op(x_of(s))}}}}};
    p.extreme = extreme;
    return p;
}

// x' = c*x + s*y, y' = c*y - conj(s)*x
Plan rotation(const View& x, const View& y, Number c, Number s)
{
    return {
        {{after(x), {{c, op(x)}, {s, op(y)}}, elementwise}, {after(y), {{c, op(y)}, {-conj(s), op(x)}}, elementwise}}};
}
Plan rot(Setting& s)
{
    const View x = x_of(s), y = y_of(s);
    return rotation(x, y, s.scalar("c"), s.scalar("s"));
}
// c*a + s*b = r, c*b = conj(s)*a, c^2 + |s|^2 = 1
Plan rotg(Setting& s)
{
    const Operand a = op(s.element("a")), b = op(s.element("b")), r = after(a.view);
    const Operand cosine = after(s.element("c")), sine = after(s.element("s")), turned{sine.view, 'r', true};
    const double few = 24;
    Plan p{{{{}, {{{1, 0}, cosine, a}, {{1, 0}, sine, b}, {{-1, 0}, r}}, few},
            {{}, {{{1, 0}, cosine, b}, {{-1, 0}, turned, a}}, few},
            {{}, {{{1, 0}, cosine, cosine}, {{1, 0}, turned, sine}, {{-1, 0}, ones(1)}}, few}}};
    // Real: b becomes what c and s can be recovered from, one of s, 1/c, 1.
    if (!s.is_complex("b")) p.equations.push_back({{}, {{{0, 0}, after(b.view)}}, few});
    return p;
}

// param: flag, h11, h21, h12, h22; which of them are implied is the flag's to say.
Plan rotm(Setting& s)
{
    const View x = x_of(s), y = y_of(s);
    const i64 flag = s.extra("flag", -1, -2, 1);
    const auto h = [&](i64 at) { return op(s.element("param", at)); };
    const Operand one = ones(1), h11 = flag == -1 || flag == 1 ? h(1) : one, h22 = flag == -1 || flag == 1 ? h(4) : one;
    Plan p;
    p.presets = {{"param", 0, {static_cast<double>(flag), 0}}};
    if (flag == -2) p.equations = {{after(x), {{{1, 0}, op(x)}}}, {after(y), {{{1, 0}, op(y)}}}};
    else
        p.equations = {{after(x), {{{1, 0}, op(x), h11}, {{1, 0}, op(y), flag == 1 ? one : h(3)}}, elementwise},
                       {after(y),
                        {{{1, 0}, op(y), h22}, {{flag == 1 ? -1.0 : 1.0, 0}, op(x), flag == 1 ? one : h(2)}},
                        elementwise}};
    return p;
}
// For d1*x1^2 > |d2*y1^2| and no need to scale, H = (1, h12; h21, 1): h21*x1 = -y1, h12*d1*x1 = d2*y1,
// x1' = x1 + h12*y1, and d1', d2' are d1, d2 times x1/x1'.
Plan rotmg(Setting& s)
{
    const Number d1 = s.scalar("d1"), d2 = s.scalar("d2"), x1 = s.scalar("x1"), y1 = s.scalar("y1");
    const double first = d1.re * x1.re * x1.re, second = std::abs(d2.re * y1.re * y1.re);
    const bool has_that_form = first > 1.01 * second && second > 0 && 0.01 < d1.re && d1.re < 100 &&
                               0.01 < std::abs(d2.re) && std::abs(d2.re) < 100;
    if (!has_that_form)
        throw Mistake("rotmg wants d1*x1^2 above |d2*y1^2| and this above 0, d1 and |d2| from 0.01 to 100, or "
                      "else its rotation has another form than verify knows");
    const Operand h21 = after(s.element("param", 2)), h12 = after(s.element("param", 3));
    const Operand new_d1 = after(s.element("d1")), new_d2 = after(s.element("d2")), new_x1 = after(s.element("x1"));
    const Operand one = ones(1);
    const double few = 24;
    Plan p{{{{}, {{x1, h21}, {y1, one}}, few},
            {{}, {{d1 * x1, h12}, {-(d2 * y1), one}}, few},
            {{}, {{x1, one}, {y1, h12}, {{-1, 0}, new_x1}}, few},
            {{}, {{{1, 0}, new_d1, new_x1}, {-(d1 * x1), one}}, few},
            {{}, {{{1, 0}, new_d2, new_x1}, {-(d2 * x1), one}}, few},
            {after(s.element("param", 0)), {}}}};
    p.presets = {{"d1", 0, d1}, {"d2", 0, d2}, {"x1", 0, x1}};
    return p;
}

// ---- Sparse vectors -------------------------------------------------------------------------------------------------

View sparse(Setting& s) { return s.vector("x", s.size("n"), ""); }
// The elements of the dense vector that the sparse one has.
View dense(Setting& s) { return {"y", s.size("n"), 1, View::Places::sparse}; }

Plan axpyi(Setting& s)
{
    const View y = dense(s);
    return {{{after(y), {{s.scalar("alpha"), op(sparse(s))}, {{1, 0}, op(y)}}, elementwise}}};
}
template <char left> Plan doti(Setting& s)
{
    const View x = sparse(s);
    return {{{after(s.element("result")), {{{1, 0}, op(x, left), op(dense(s))}}, roundings_of_sum(x.rows)}}};
}
Plan gthr(Setting& s) { return {{{after(sparse(s)), {{{1, 0}, op(dense(s))}}}}}; }
Plan gthrz(Setting& s)
{
    Plan p = gthr(s);
    p.equations.push_back({after(dense(s)), {}});
    return p;
}
Plan sctr(Setting& s) { return {{{after(dense(s)), {{{1, 0}, op(sparse(s))}}}}}; }
Plan roti(Setting& s)
{
    const View x = sparse(s), y = dense(s);
    return rotation(x, y, s.scalar("c"), s.scalar("s"));
}

// Both sides of the blocks that loops are made of, at two alignments, and strides of either sign.
const std::vector<const char*> one_vector{"n=0|1|2|3|4|5|7|8|9|15|16|17|31|32|33|63|64|65|127|128|129|1000 shift=0|1",
                                          "n=1|2|5|17|64 incx=-1|2|-3", "n=20000"};
const std::vector<const char*> two_vectors{"n=0|1|2|3|4|5|7|8|9|15|16|17|31|32|33|63|64|65|127|128|129|1000 shift=0|1",
                                           "n=1|2|5|17|64 incx=1|-1|2 incy=-1|-3", "n=20000"};
const std::vector<const char*> sparse_sizes{"n=0|1|2|3|4|5|7|8|9|16|17|31|33|64|65|1000 shift=0|1"};

} // namespace

#define REAL(name) routine<orv_s##name>("s"), routine<orv_d##name>("d")
#define COMPLEX(name) routine<orv_c##name>("c"), routine<orv_z##name>("z")
#define ALL(name) REAL(name), COMPLEX(name)

Group vectors()
{
    return {"level1",
            "vectors",
            {{"axpy", "n alpha x incx y incy", axpy, two_vectors, {ALL(axpy)}},
             {"axpby", "n alpha x incx beta y incy", axpy, two_vectors, {ALL(axpby)}},
             {"scal",
              "n alpha x incx",
              scal,
              one_vector,
              {ALL(scal), routine<orv_csscal>("cs"), routine<orv_zdscal>("zd")}},
             {"copy", "n x incx y incy", copy, two_vectors, {ALL(copy)}},
             {"swap", "n x incx y incy", swap, two_vectors, {ALL(swap)}},
             {"dot", "n x incx y incy", dot<'t'>, two_vectors, {REAL(dot)}},
             {"dotu", "n x incx y incy", dot<'t'>, two_vectors, {COMPLEX(dotu)}},
             {"dotc", "n x incx y incy", dot<'c'>, two_vectors, {COMPLEX(dotc)}},
             {"sdsdot", "n sb x incx y incy", wide_dot, two_vectors, {routine<orv_sdsdot>("s")}},
             {"dsdot", "n x incx y incy", wide_dot, two_vectors, {routine<orv_dsdot>("s")}},
             {"nrm2", "n x incx", nrm2, one_vector, {REAL(nrm2), routine<orv_scnrm2>("c"), routine<orv_dznrm2>("z")}},
             {"asum", "n x incx", asum, one_vector, {REAL(asum), routine<orv_scasum>("c"), routine<orv_dzasum>("z")}},
             {"amax",
              "n x incx",
              position<1>,
              {"n=0|1|2|3|4|5|8|9|16|17|33|65|129|1000 shift=0|1", "n=5|17 incx=2|3"},
              {routine<orv_isamax>("s"), routine<orv_idamax>("d"), routine<orv_icamax>("c"), routine<orv_izamax>("z")}},
             {"amin",
              "n x incx",
              position<-1>,
              {"n=0|1|2|3|4|5|8|9|16|17|33|65|129|1000 shift=0|1", "n=5|17 incx=2|3"},
              {routine<orv_isamin>("s"), routine<orv_idamin>("d"), routine<orv_icamin>("c"), routine<orv_izamin>("z")}},
             {"rot",
              "n x incx y incy c s",
              rot,
              two_vectors,
              {ALL(rot), routine<orv_csrot>("cs"), routine<orv_zdrot>("zd")}},
             {"rotg", "a b c s", rotg, {"seed=1|2|3|4|5|6|7|8"}, {ALL(rotg)}},
             {"rotm",
              "n x incx y incy param",
              rotm,
              {"n=1|2|3|4|5|8|9|17|33|64 flag=-2|-1|0|1", "n=7 incx=-1 incy=2"},
              {REAL(rotm)}},
             {"rotmg", "d1 d2 x1 y1 param", rotmg, {"d1=1.5|8 d2=0.5|-0.5 x1=1.25|-2 y1=0.75"}, {REAL(rotmg)}}}};
}

Group sparse_vectors()
{
    return {"sparse",
            "sparse vectors",
            {{"axpyi", "n alpha x indx y", axpyi, sparse_sizes, {ALL(axpyi)}},
             {"doti", "n x indx y", doti<'t'>, sparse_sizes, {REAL(doti)}},
             {"dotui", "n x indx y", doti<'t'>, sparse_sizes, {COMPLEX(dotui)}},
             {"dotci", "n x indx y", doti<'c'>, sparse_sizes, {COMPLEX(dotci)}},
             {"gthr", "n y x indx", gthr, sparse_sizes, {ALL(gthr)}},
             {"gthrz", "n y x indx", gthrz, sparse_sizes, {ALL(gthrz)}},
             {"sctr", "n x indx y", sctr, sparse_sizes, {ALL(sctr)}},
             {"roti", "n x indx y c s", roti, sparse_sizes, {REAL(roti)}}}};
}

} // namespace orv::verify
