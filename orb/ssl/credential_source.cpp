#include "orb/ssl/credential_source.h"

#include <sys/stat.h>

#include <tuple>
#include <utility>

#include "orb/ssl/ssl_error.h"

namespace qv_ssl {

bool CredentialSource::FileMark::operator==(const FileMark& other) const {
    const auto tie = [](const FileMark& mark) {
        return std::tie(mark.exists, mark.device, mark.inode, mark.size, mark.seconds, mark.nanoseconds);
    };
    return tie(*this) == tie(other);
}

CredentialSource::CredentialSource(SslSettings settings, Clock clock, Report report)
    : settings_(std::move(settings)),
      clock_(std::move(clock)),
      report_(std::move(report)),
      looked_at_(clock_()),
      marks_(LookAtFiles()),
      current_(std::make_shared<const Credentials>(LoadCredentials(settings_))) {}

CredentialSource::FileMark CredentialSource::MarkOf(const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return {};
    }
    return {true,           status.st_dev,         status.st_ino,
            status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// Looked at ahead of reading: a change between the two is seen the next time.
CredentialSource::Marks CredentialSource::LookAtFiles() const {
    return {MarkOf(settings_.certificate_file), MarkOf(settings_.private_key_file)};
}

std::shared_ptr<const Credentials> CredentialSource::Current() {
    const std::lock_guard<std::mutex> guard(mutex_);
    const Time now = clock_();
    if (now - looked_at_ >= kPause) {
        looked_at_ = now;
        const Marks marks = LookAtFiles();
        if (!(marks == marks_)) {
            marks_ = marks;
            Reload();
        }
    }
    return current_;
}

void CredentialSource::Reload() {
    try {
        current_ = std::make_shared<const Credentials>(LoadCredentials(settings_));
        report_("the new certificate in " + settings_.certificate_file +
                " is shown to peers from now on; it is valid until " +
                TimeText(X509_get0_notAfter(current_->certificate.get())));
    } catch (const SslError& problem) {
        report_(std::string("the certificate or its key was replaced, but ") + problem.what() +
                "; the former pair stays in use until both files are right");
    }
}

}  // namespace qv_ssl
