#pragma once

#include <memory>
#include <string>

#include "services/notify/store/database.h"

namespace qv_notify {

/// Keeps a second process away from a store by a lock on a file beside it, which ends with the process.
class StoreLock {
  public:
    /// Throws StoreError when another process has the store, or the file can't be made.
    explicit StoreLock(const std::string& store);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

  private:
    int m_fd = -1;
};

/// Opens the file of a store, or makes it, mode 0600. Throws StoreError.
std::unique_ptr<Database> OpenStoreFile(const std::string& path);

/// The sentence for the operator: what could not be done with the store, why, and what to do.
std::string Explain(const std::string& path, const std::string& what, const DatabaseError& error);

}  // namespace qv_notify
