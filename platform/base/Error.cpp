#include "platform/base/Error.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

#include "platform/base/CurrentError.h"

namespace platform {

namespace {

std::string oneLine(const std::string& file, const std::string& key, const std::string& message) {
    std::string text;
    for (const std::string& part : {file, key})
        if (!part.empty()) text += part + ": ";
    text += message;
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20) c = ' ';
    return text;
}

}  // namespace

bool isPassing(int errnoValue) {
    return errnoValue == ENOSPC || errnoValue == EDQUOT || errnoValue == EFBIG || errnoValue == ENOMEM ||
           errnoValue == EMFILE || errnoValue == ENFILE || errnoValue == EAGAIN || errnoValue == EIO ||
           errnoValue == EINTR;
}

Error::Error(ErrorKind kind, const std::string& message, const std::string& file, const std::string& key)
    : std::runtime_error(oneLine(file, key, message)),
      kind_(kind),
      message_(message),
      file_(file),
      key_(key) {}

Error errnoError(int errnoValue, const std::string& action, const std::string& file, ErrorKind kind) {
    const std::string reason = std::generic_category().message(errnoValue);
    return Error(isPassing(errnoValue) ? ErrorKind::Transient : kind, action + ": " + reason, file);
}

Error currentError() {
    try {
        throw;
    } catch (const Error& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return Error(ErrorKind::Transient, "out of memory");
    } catch (const std::filesystem::filesystem_error& error) {
        return errnoError(error.code().value(), "cannot be looked at", error.path1().string());
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::resource_unavailable_try_again)
            return Error(ErrorKind::Transient, "out of memory or threads");
        return Error(isPassing(error.code().value()) ? ErrorKind::Transient : ErrorKind::Failed,
                     error.what());
    } catch (const std::exception& error) {
        return Error(ErrorKind::Failed, error.what());
    }
}

}  // namespace platform
