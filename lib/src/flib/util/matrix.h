// Matrices in the storage order of the science's formulas: column by column, first index fastest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

#include "flib/io/stop_run.h"

namespace flib {

/// The number of elements of an array with these extents; an extent below 1 makes it empty.
/// Throws run_error, which names `what`, if it cannot be counted in 64 bits.
std::size_t element_count(std::initializer_list<std::int32_t> extents, const char* what);

/// Throws the run_error of a run without enough memory for `what`.
[[noreturn]] void fail_allocation(const char* what);

/// An array of zeros, owned. Its memory is taken from the system when it is first written to, so
/// that a count that a damaged file made absurd costs nothing by itself.
template <class T>
class zeroed_array {
    static_assert(std::is_trivial_v<T>);

  public:
    zeroed_array() = default;
    /// Throws run_error, which names `what`, when there is not enough memory.
    zeroed_array(std::initializer_list<std::int32_t> extents, const char* what)
        : count_(element_count(extents, what)),
          elements_(count_ > PTRDIFF_MAX / sizeof(T)
                        ? nullptr
                        : static_cast<T*>(std::calloc(count_ == 0 ? 1 : count_, sizeof(T)))) {
        if (!elements_) fail_allocation(what);
    }

    std::size_t size() const { return count_; }
    T* data() { return elements_.get(); }
    const T* data() const { return elements_.get(); }
    std::span<T> all() { return {elements_.get(), count_}; }
    std::span<const T> all() const { return {elements_.get(), count_}; }

  private:
    struct release {
        void operator()(T* elements) const { std::free(elements); }
    };
    std::size_t count_ = 0;
    std::unique_ptr<T[], release> elements_;
};

/// A matrix that somebody else owns.
template <class T>
class matrix_view {
  public:
    matrix_view(T* elements, std::int32_t rows, std::int32_t columns)
        : elements_(elements), rows_(rows), columns_(columns) {}
    /// A matrix to be read only.
    operator matrix_view<const T>() const { return {elements_, rows_, columns_}; }

    std::int32_t rows() const { return rows_; }
    std::int32_t columns() const { return columns_; }

    /// Element (i, j), 1-based, not checked.
    T& operator()(std::int32_t i, std::int32_t j) const { return column_data(j)[i - 1]; }

    /// Column j, 1-based, not checked.
    std::span<T> column(std::int32_t j) const {
        return {column_data(j), static_cast<std::size_t>(rows_)};
    }

    /// All elements in storage order.
    std::span<T> all() const {
        const auto extent = [](std::int32_t n) { return static_cast<std::size_t>(n > 0 ? n : 0); };
        return {elements_, extent(rows_) * extent(columns_)};
    }

    T* data() const { return elements_; }

  private:
    T* column_data(std::int32_t j) const {
        return elements_ + static_cast<std::ptrdiff_t>(j - 1) * rows_;
    }

    T* elements_;
    std::int32_t rows_;
    std::int32_t columns_;
};

/// A matrix of zeros, owned.
template <class T>
class matrix {
  public:
    matrix(std::int32_t rows, std::int32_t columns, const char* what)
        : elements_({rows, columns}, what), rows_(rows), columns_(columns) {}

    matrix_view<T> view() { return {elements_.data(), rows_, columns_}; }
    matrix_view<const T> view() const { return {elements_.data(), rows_, columns_}; }
    T& operator()(std::int32_t i, std::int32_t j) { return view()(i, j); }
    T operator()(std::int32_t i, std::int32_t j) const { return view()(i, j); }

  private:
    zeroed_array<T> elements_;
    std::int32_t rows_;
    std::int32_t columns_;
};

}  // namespace flib
