#pragma once

#include <cstdint>

/// 32-bit status of the object model: negative values are failures.
using HRESULT = std::int32_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);

/// True for every status that is not a failure.
constexpr bool SUCCEEDED(HRESULT status) noexcept { return status >= 0; }
/// True for every status that is a failure.
constexpr bool FAILED(HRESULT status) noexcept { return status < 0; }
