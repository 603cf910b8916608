// What each family reads for every case of alpha and beta: a NaN in an operand reaches the result if and only if the
// operand is read.
#include "tests/xblas/problem.h"
#include "tests/xblas/signature.h"

#include <algorithm>

namespace orv::test::extended {
namespace {

bool is_one_of(const std::string& op, std::initializer_list<const char*> list)
{
    return std::any_of(list.begin(), list.end(), [&](const char* name) { return op == name; });
}

// An operand by its name in the signature; y, r and w are the results, y the input in dot and waxpby.
bool reads(const std::string& op, const std::string& operand, double alpha, double beta)
{
    if (op == "ge_sum_mv")
        return operand == "a" ? alpha != 0 : operand == "b" ? beta != 0 : operand == "x" && (alpha != 0 || beta != 0);
    if (is_one_of(op, {"sum", "waxpby", "tpmv"})) return operand != "w" && !(op == "sum" && operand == "r");
    if (op[0] == 't') return alpha != 0;
    const bool general = op.starts_with("gemv");
    if (alpha == 0 && beta == 1 && !general) return false; // nothing happens
    if (is_one_of(op, {"dot", "axpby", "gbmv", "gbmv2"})) return true;
    if (operand != "y") return alpha != 0;
    return beta != 0 || (alpha == 0 && !general);
}

// A problem of size 3 in which all numbers are 1, but those of one operand.
class Planted {
public:
    explicit Planted(const Member& m) : m_(m), out_(m.op == "waxpby" ? "w" : m.op == "dot" || m.op == "sum" ? "r" : "y")
    {
        const bool of_vectors = m.op == "dot" || m.op == "waxpby";
        for (const char* name : {"alpha", "beta", "w", "r"}) add(name, m.type);
        add("a", m.first), add("tail", m.second), add("b", m.op == "ge_sum_mv" ? m.first : m.second);
        add("x", of_vectors || m.op == "axpby" || m.op == "sum" ? m.first : m.second);
        add("y", of_vectors ? m.second : m.type);
    }
    bool has(const std::string& operand) const
    {
        return (" " + signatures.at(m_.op) + " ").find(" " + operand + " ") != std::string::npos;
    }

    // Whether a NaN in the operand reaches the result; what nothing was written to counts as unread.
    bool spreads(const std::string& operand, i64 prec, double alpha, double beta)
    {
        for (auto& [name, array] : arrays_)
            for (i64 i = 0; i < array.length(); ++i)
                array.set(i, name == operand ? std::nan("") : name == "alpha" ? alpha : name == "beta" ? beta : 1, 0);
        const Array& out = arrays_.at(out_);
        const std::string before = out.bits();
        static const std::map<std::string, i64> options{{"order", column_major},
                                                        {"trans", no_trans},
                                                        {"transa", no_trans},
                                                        {"transb", no_trans},
                                                        {"uplo", upper},
                                                        {"diag", non_unit},
                                                        {"side", left},
                                                        {"conj", no_conj},
                                                        {"lda", 4},
                                                        {"ldb", 4},
                                                        {"ldc", 4},
                                                        {"ldt", 4},
                                                        {"m", 3},
                                                        {"n", 3}}; // others: 1
        call_by_name(
            m_, prec, [](const std::string& name) { return options.contains(name) ? options.at(name) : 1; },
            [&](const std::string& name) -> const Array& { return arrays_.at(name); });
        const bool nothing_happens =
            has("beta") && !m_.op.starts_with("gemv") && alpha == 0 && beta == 1 && out.bits() == before;
        return std::isnan(out[0].re) && !nothing_happens;
    }

private:
    void add(const std::string& name, char type) { arrays_.emplace(name, Array(type, 16)); }

    Member m_;
    std::string out_;
    std::map<std::string, Array> arrays_;
};

TEST(ExtendedReading, is_of_what_alpha_and_beta_need_and_no_more)
{
    for (const Member& m : members()) {
        if (!m.for_c) continue;
        Planted planted(m);
        for (const char* operand : {"a", "b", "x", "tail", "y", "w", "r"})
            for (const i64 prec : {single, double_, extra})
                for (const double alpha : {0.0, 1.0, 2.0})
                    for (const double beta : {0.0, 1.0, 2.0})
                        if (planted.has(operand)) {
                            ASSERT_EQ(planted.spreads(operand, prec, alpha, beta), reads(m.op, operand, alpha, beta))
                                << m.name << " prec=" << prec << " alpha=" << alpha << " beta=" << beta << " "
                                << operand;
                        }
    }
}

} // namespace
} // namespace orv::test::extended
