// A matrix from a file, as `orv sparse` looks at it.
#pragma once

#include "market/market.h"

#include <cstdint>
#include <orv/sparse.h>
#include <string>
#include <vector>

namespace orv::cli {

// A record that gives its memory back.
class Sparse {
public:
    Sparse() = default;
    Sparse(Sparse&& other) noexcept : record_(other.record_) { other.record_ = {}; }
    Sparse& operator=(Sparse&& other) noexcept
    {
        std::swap(record_, other.record_);
        return *this;
    }
    ~Sparse() { orv_sparse_free(&record_); }
    orv_sparse* operator->() { return &record_; }
    const orv_sparse* operator->() const { return &record_; }
    orv_sparse* get() { return &record_; }
    const orv_sparse* get() const { return &record_; }

private:
    orv_sparse record_{};
};

// What the file has, in coordinates, of a symmetric one the lower triangle; and all of it in compressed rows.
class Matrix {
public:
    // Ends the program where the file cannot be read.
    Matrix(const char* program, const char* path);
    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;
    ~Matrix() { free_market(&file_); }

    const orv_sparse& stored() const { return stored_; }
    const orv_sparse& rows() const { return *rows_.get(); }
    std::string kind() const;

private:
    std::string nature_of_general() const;

    market file_{};
    orv_sparse stored_{};
    Sparse rows_;
};

// Ends the program with the library's sentence.
[[noreturn]] void give_up();

// Entries per cell of a picture that is `across` cells wide and `down` high.
struct Picture {
    int across, down;
    std::vector<double> density; // by rows: 0 for nothing, 1 for all full
    double at(int row, int column) const
    {
        return density[static_cast<std::size_t>(row) * static_cast<std::size_t>(across) +
                       static_cast<std::size_t>(column)];
    }
};
Picture picture_of(const orv_sparse& rows, int across, int down);
void print(const Picture& picture);
bool write_svg(const orv_sparse& rows, const std::string& title, const char* path);

// The table of formats, and the fastest of them.
void compare_formats(const Matrix& matrix);

} // namespace orv::cli
