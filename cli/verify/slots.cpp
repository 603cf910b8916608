#include "cli/verify/slots.h"

#include <new>

namespace orv::verify {
namespace {

int precision(const std::string& name)
{
    return name == "single"   ? ORV_PREC_SINGLE
           : name == "double" ? ORV_PREC_DOUBLE
           : name == "extra"  ? ORV_PREC_EXTRA
                              : ORV_PREC_INDIGENOUS;
}
int option(const Setting& setting, const Argument& a)
{
    const char letter = setting.letter(a.name);
    if (a.name == "order") return letter == 'r' ? ORV_ROW_MAJOR : ORV_COLUMN_MAJOR;
    if (a.name == "uplo") return letter == 'u' ? ORV_UPPER : ORV_LOWER;
    if (a.name == "diag") return letter == 'u' ? ORV_UNIT_DIAG : ORV_NON_UNIT_DIAG;
    if (a.name == "side") return letter == 'l' ? ORV_LEFT_SIDE : ORV_RIGHT_SIDE;
    if (a.name == "conj") return letter == 'c' ? ORV_CONJ : ORV_NO_CONJ;
    return letter == 'n' ? ORV_NO_TRANS : letter == 't' ? ORV_TRANS : ORV_CONJ_TRANS;
}

} // namespace

Slots::Slots(Setting& setting, const Problem& resolved, Arrays& arrays)
{
    values_.resize(setting.arguments().size());
    auto value = values_.begin();
    for (const Argument& a : setting.arguments()) {
        Array* const array = arrays.find(a.name);
        if (array == nullptr) store(setting, resolved, a, *value);
        addresses_.push_back(array ? array->data() : value->bytes);
        ++value;
    }
}

void Slots::store(Setting& setting, const Problem& resolved, const Argument& a, Value& value)
{
    if (a.kind == 'l') return value.set(setting.given_letter(a.name));
    if (a.kind == 'o') return value.set(a.name == "prec" ? precision(*resolved.find("prec")) : option(setting, a));
    if (a.kind == 'i') return value.set<i64>(std::stoll(*resolved.find(a.name)));
    const Number number = setting.scalar(a.name);
    const cpx<float> narrow{static_cast<float>(number.re), static_cast<float>(number.im)};
    if (a.kind == 's') value.set(narrow.re);
    else if (a.kind == 'c') value.set(narrow);
    else if (a.kind == 'd') value.set(number.re);
    else value.set(number);
}

} // namespace orv::verify
