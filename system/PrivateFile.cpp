#include "system/PrivateFile.h"

#ifdef _WIN32
#include <QDir>
#include <QUuid>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#else
#include "system/WholeFile.h"

#include <QSaveFile>
#endif

#ifdef _WIN32

namespace {

template<class T>
using Local = std::unique_ptr<T, HLOCAL(WINAPI*)(HLOCAL)>; ///< What LocalFree frees.

/** The user of this process as text, like "S-1-5-21-..."; empty on failure. */
std::wstring currentUser()
{
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) {
        return {};
    }
    const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> closer(token, &CloseHandle);
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<std::max_align_t> memory(size / sizeof(std::max_align_t) + 1);
    if (GetTokenInformation(token, TokenUser, memory.data(), size, &size) == 0) {
        return {};
    }
    LPWSTR text = nullptr;
    if (ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(memory.data())->User.Sid, &text) == 0) {
        return {};
    }
    const Local<wchar_t> owner(text, &LocalFree);
    return text;
}

/** Creates a file with all rights for one user, and none inherited from its folder. */
HANDLE createFor(const std::wstring& user, const QString& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const std::wstring rights = L"D:P(A;;FA;;;" + user + L")";
    if (user.empty() || ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1,
                                                                             &descriptor, nullptr) == 0) {
        return INVALID_HANDLE_VALUE;
    }
    const Local<void> owner(descriptor, &LocalFree);
    SECURITY_ATTRIBUTES attributes{sizeof(attributes), descriptor, FALSE};
    return CreateFileW(path.toStdWString().c_str(), GENERIC_WRITE, 0, &attributes, CREATE_NEW,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

bool writePrivateFile(const QString& path, const QByteArray& bytes, QString* error)
{
    const auto fail = [error](DWORD code) {
        if (error != nullptr) {
            *error = qt_error_string(static_cast<int>(code));
        }
        return false;
    };
    const QString target = QDir::toNativeSeparators(path);
    // Of a name that no other file has: one that is there already is somebody's, and would keep its rights.
    const QString made =
        QStringLiteral("%1.%2").arg(target, QUuid::createUuid().toString(QUuid::WithoutBraces));
    const HANDLE file = createFor(currentUser(), made);
    if (file == INVALID_HANDLE_VALUE) {
        return fail(GetLastError());
    }
    DWORD written = 0;
    const bool whole =
        WriteFile(file, bytes.constData(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0 &&
        written == static_cast<DWORD>(bytes.size()) && FlushFileBuffers(file) != 0;
    DWORD code = GetLastError();
    CloseHandle(file);
    if (whole) {
        if (MoveFileExW(made.toStdWString().c_str(), target.toStdWString().c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return true;
        }
        code = GetLastError();
    }
    DeleteFileW(made.toStdWString().c_str());
    return fail(code);
}

#else

bool writePrivateFile(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        if (error != nullptr) {
            *error = file.errorString();
        }
        return false;
    }
    return saveWhole(file, bytes, error);
}

#endif
