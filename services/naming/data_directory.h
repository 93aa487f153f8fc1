// Where the bindings live between two runs of the naming service.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "services/naming/command_line.h"

namespace qv_naming {

/// The directory for the bindings: "-u" as given; otherwise naming-PORT below the first of $QV_NAMING_DATA,
/// the directory of "-o", $XDG_STATE_HOME/qv_naming and $HOME/.local/state/qv_naming. Always an absolute
/// path. Throws StartError when none of them is set.
std::filesystem::path ChooseDataDirectory(const Settings& settings);

/// One process's hold on a data directory and the files of bindings in it.
/// Not thread safe. The lock is passed on to the name server, so that it lasts until both processes are gone.
class DataDirectory {
  public:
    /// Creates the directory if need be and takes its lock, for which it waits up to `patience`: the name
    /// server of a front that was killed is still going down for a moment. Throws StartError.
    DataDirectory(std::filesystem::path directory, std::chrono::milliseconds patience);
    DataDirectory(const DataDirectory&) = delete;
    DataDirectory& operator=(const DataDirectory&) = delete;
    ~DataDirectory();

    const std::filesystem::path& Path() const { return directory_; }
    std::filesystem::path BindingFile() const;
    std::filesystem::path BackupFile() const;
    /// Whether there is a backup; one that the name server made since Remember doesn't count.
    bool HasBackup() const;

    /// Repairs what an interrupted name server leaves behind: a binding file that is missing between two
    /// steps of a checkpoint comes back from the backup; a last record that was cut short is dropped and the
    /// file as it was kept under the suffix ".damaged". Returns a sentence for the operator, empty when all
    /// was well. Throws StartError.
    std::string Repair();

    /// Remembers the bindings and their backup as they are now, until Commit or RollBack. Throws StartError.
    void Remember();
    /// Lets what was remembered go. Without effect when nothing is.
    void Commit();
    /// Brings back what was remembered; a file that there was not goes. Without effect when nothing is
    /// remembered.
    void RollBack();

  private:
    void Create() const;
    void Lock(std::chrono::milliseconds patience);
    std::string DropCutRecord();

    std::filesystem::path directory_;
    int lock_ = -1;
    bool remembers_ = false;
};

}  // namespace qv_naming
