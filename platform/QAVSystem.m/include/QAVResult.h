#pragma once

#include <cstdint>

/// 32-bit status of the object model: negative values are failures.
using HRESULT = std::int32_t;

/// Success.
inline constexpr HRESULT S_OK = 0;
/// Failure; what was given or found does not suit the operation.
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
/// There is no such operation or type.
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
/// The object is of no such class.
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
/// A pointer is null that must not be.
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
/// The data are malformed.
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);

/// True for every status that is not a failure.
constexpr bool SUCCEEDED(HRESULT status) noexcept { return status >= 0; }
/// True for every status that is a failure.
constexpr bool FAILED(HRESULT status) noexcept { return status < 0; }
