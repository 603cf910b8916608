// The method of a fast Poisson solver as one writes it over FFTW: sine transforms of all rows, or of all planes of a
// box, a tridiagonal system for each wave along the last axis, and back. Plans are by measurements, and the factors of
// the elimination are kept with them.
#include <array>
#include <cmath>
#include <cstdlib>
#include <fftw3.h>
#include <map>
#include <vector>

namespace {

using Cells = std::array<int, 3>;

template <class T> struct Fftw;
#define PRECISION(T, prefix)                                                                                           \
    template <> struct Fftw<T> {                                                                                       \
        using Plan = prefix##_plan;                                                                                    \
        static Plan sines(int rank, const fftw_iodim* dims, int rows, int apart, T* u)                                 \
        {                                                                                                              \
            const fftw_r2r_kind kinds[] = {FFTW_RODFT00, FFTW_RODFT00};                                                \
            const fftw_iodim all{rows, apart, apart};                                                                  \
            return prefix##_plan_guru_r2r(rank, dims, 1, &all, u, u, kinds, FFTW_MEASURE);                             \
        }                                                                                                              \
        static void run(Plan plan, T* u) { prefix##_execute_r2r(plan, u, u); }                                         \
    };
PRECISION(double, fftw)
PRECISION(float, fftwf)

template <class T> class Solver {
public:
    explicit Solver(const Cells& n)
        : row_(n[0] + 1), layer_(n[2] == 0 ? row_ : static_cast<long>(row_) * (n[1] + 1)),
          layers_(n[2] == 0 ? n[1] : n[2]), first_(n[2] == 0 ? layer_ + 1 : layer_ + row_ + 1), columns_(n[0] - 1),
          rows_(n[2] == 0 ? 1 : n[1] - 1)
    {
        const fftw_iodim x{n[0] - 1, 1, 1}, y{n[1] - 1, row_, row_}, plane[] = {y, x};
        const std::size_t bytes = static_cast<std::size_t>(layer_ * (layers_ + 1)) * sizeof(T), page = 4096;
        T* const scratch = static_cast<T*>(std::aligned_alloc(page, (bytes + page - 1) / page * page));
        plan_ = Fftw<T>::sines(n[2] == 0 ? 1 : 2, n[2] == 0 ? &x : plane, layers_ - 1, static_cast<int>(layer_),
                               scratch + first_);
        std::free(scratch);

        const double h = 1. / layers_;
        const auto eigenvalue = [h](int wave, int cells) {
            const double root = 2 * h * cells * std::sin(wave * std::acos(-1.) / (2 * cells));
            return root * root;
        };
        scale_ = static_cast<T>(h * h / (2 * n[0]) / (n[2] == 0 ? 1 : 2 * n[1]));
        factors_.resize(static_cast<std::size_t>(columns_) * rows_ * (layers_ - 1));
        T* c = factors_.data();
        const long waves = static_cast<long>(columns_) * rows_;
        for (int k = 0; k < layers_ - 1; ++k)
            for (int j = 0; j < rows_; ++j)
                for (int i = 0; i < columns_; ++i, ++c) {
                    const double d = 2 + eigenvalue(i + 1, n[0]) + (n[2] == 0 ? 0 : eigenvalue(j + 1, n[1]));
                    *c = static_cast<T>(1 / (d - (k == 0 ? 0 : static_cast<double>(c[-waves]))));
                }
    }

    void run(T* u) const
    {
        T* const at = u + first_;
        Fftw<T>::run(plan_, at);
        const long waves = static_cast<long>(columns_) * rows_;
        for (int k = 0; k < layers_ - 1; ++k)
            for (int j = 0; j < rows_; ++j) {
                T* const row = at + k * layer_ + static_cast<long>(j) * row_;
                const T* const c = factors_.data() + k * waves + static_cast<long>(j) * columns_;
                if (k == 0)
                    for (int i = 0; i < columns_; ++i) row[i] = row[i] * scale_ * c[i];
                else
                    for (int i = 0; i < columns_; ++i) row[i] = (row[i] * scale_ + row[i - layer_]) * c[i];
            }
        for (int k = layers_ - 3; k >= 0; --k)
            for (int j = 0; j < rows_; ++j) {
                T* const row = at + k * layer_ + static_cast<long>(j) * row_;
                const T* const c = factors_.data() + k * waves + static_cast<long>(j) * columns_;
                for (int i = 0; i < columns_; ++i) row[i] += c[i] * row[i + layer_];
            }
        Fftw<T>::run(plan_, at);
        clear_sides(u);
    }

private:
    void clear_sides(T* u) const
    {
        for (int k = 0; k <= layers_; ++k) {
            T* const layer = u + k * layer_;
            const bool whole = k == 0 || k == layers_;
            for (long i = 0; i < layer_; ++i) {
                const long x = i % row_, y = i / row_;
                if (whole || x == 0 || x == row_ - 1 || (rows_ > 1 && (y == 0 || y == rows_ + 1))) layer[i] = 0;
                else if (x == 1) i += row_ - 3; // to the other end
            }
        }
    }

    int row_;
    long layer_;
    int layers_;
    long first_;
    int columns_, rows_;
    T scale_;
    std::vector<T> factors_;
    typename Fftw<T>::Plan plan_;
};

template <class T> void solve(const Cells& cells, T* u)
{
    static std::map<Cells, Solver<T>> kept;
    kept.try_emplace(cells, cells).first->second.run(u);
}

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))
EXPORT void dpoisson_(const int* nx, const int* ny, const int* nz, double* u) { solve({*nx, *ny, *nz}, u); }
EXPORT void spoisson_(const int* nx, const int* ny, const int* nz, float* u) { solve({*nx, *ny, *nz}, u); }
