#include "core/xblas/arguments.h"

#include <string_view>

namespace orv::core::extended {
namespace {

class Arguments {
public:
    Arguments(const char* signature, const i64* numbers, int count)
        : signature_(signature), numbers_(numbers), count_(count)
    {
    }

    int first_bad() const
    {
        for (int i = 0; i < count_; ++i)
            if (!is_good(name(i), numbers_[i])) return i + 1;
        return 0;
    }

private:
    std::string_view name(int position) const
    {
        std::string_view rest = signature_;
        for (; position > 0; --position) rest.remove_prefix(rest.find(' ') + 1);
        return rest.substr(0, rest.find(' '));
    }
    i64 value(std::string_view wanted) const
    {
        for (int i = 0; i < count_; ++i)
            if (name(i) == wanted) return numbers_[i];
        return 0;
    }

    bool is_good(std::string_view name, i64 number) const
    {
        const auto within = [number](i64 from, i64 to) { return number >= from && number <= to; };
        if (name == "order") return within(101, 102);
        if (name.starts_with("trans")) return within(111, 113);
        if (name == "uplo") return within(121, 122);
        if (name == "diag") return within(131, 132);
        if (name == "side") return within(141, 142);
        if (name == "conj") return within(191, 192);
        if (name == "prec") return within(211, 214);
        if (name == "m" || name == "n") return number >= 0;
        if (name == "k") return number >= 0 && (!is_band() || number < max(1, value("n")));
        if (name == "kl") return number >= 0 && number < max(1, value("m"));
        if (name == "ku") return number >= 0 && number < max(1, value("n"));
        if (name.starts_with("inc")) return number != 0;
        if (name.starts_with("ld:")) return number >= max(1, least(name));
        return true;
    }
    bool is_band() const { return signature_.find("ld:k") != std::string_view::npos; }

    // What a leading dimension has to hold.
    i64 least(std::string_view of) const
    {
        const i64 m = value("m"), n = value("n"), k = value("k");
        const bool row_major = value("order") == 101;
        const auto stored = [row_major](i64 rows, i64 columns) { return row_major ? columns : rows; };
        if (of == "ld:mn") return stored(m, n);
        if (of == "ld:n") return n;
        if (of == "ld:k") return k + 1;
        if (of == "ld:band") return value("kl") + value("ku") + 1;
        if (of == "ld:side") return value("side") == 141 ? m : n;
        if (of == "ld:a") return value("transa") == 111 ? stored(m, k) : stored(k, m);
        return value("transb") == 111 ? stored(k, n) : stored(n, k);
    }

    std::string_view signature_;
    const i64* numbers_;
    int count_;
};

} // namespace

int bad_argument(const char* signature, const i64* numbers, int count)
{
    return Arguments(signature, numbers, count).first_bad();
}

} // namespace orv::core::extended
