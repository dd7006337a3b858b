// Access to plain fields that the host's thread and the transmit thread share. Data first, then the
// flag that publishes it: a store releases what was written before, a load acquires it.
#ifndef QRN_BASE_SHARED_H_
#define QRN_BASE_SHARED_H_

#include <atomic>
#include <type_traits>

namespace qrn {

template <class T>
T LoadShared(T& field) {
  static_assert(std::atomic_ref<T>::is_always_lock_free);
  return std::atomic_ref<T>(field).load(std::memory_order_acquire);
}

template <class T>
void StoreShared(T& field, std::type_identity_t<T> value) {
  static_assert(std::atomic_ref<T>::is_always_lock_free);
  std::atomic_ref<T>(field).store(value, std::memory_order_release);
}

// Adds in one atomic step and returns the value before.
template <class T>
T AddShared(T& field, std::type_identity_t<T> value) {
  return std::atomic_ref<T>(field).fetch_add(value, std::memory_order_acq_rel);
}

// Replaces `expected` with `value` in one atomic step; false, and nothing changed, when the field
// holds something else.
template <class T>
bool ExchangeShared(T& field, std::type_identity_t<T> expected, std::type_identity_t<T> value) {
  return std::atomic_ref<T>(field).compare_exchange_strong(expected, value,
                                                           std::memory_order_acq_rel);
}

}  // namespace qrn

#endif  // QRN_BASE_SHARED_H_
