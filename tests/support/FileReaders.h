#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#ifdef Q_OS_WIN
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#endif

/** Who may read a file. */
namespace FileReaders {

/** Whether nobody but the file's owner may read it, by its own rights. */
inline bool isPrivate(const QString& path)
{
#ifdef Q_OS_WIN
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    LPWSTR text = nullptr;
    if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              nullptr, nullptr, &descriptor) != ERROR_SUCCESS ||
        ConvertSecurityDescriptorToStringSecurityDescriptorW(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) == 0) {
        return false;
    }
    QString rights = QString::fromWCharArray(text); // like D:P(A;;FA;;;SY)(A;;FA;;;S-1-5-21-...)
    LocalFree(text);
    LocalFree(descriptor);
    rights.remove(QLatin1String("(A;;FA;;;SY)")); // the system itself, which reads everything
    return rights.count(QLatin1Char('(')) == 1 && rights.contains(QLatin1String("(A;;FA;;;S-1-5-21-"));
#else
    const auto others =
        QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;
    return QFile::exists(path) && (QFile::permissions(path) & others) == 0;
#endif
}

} // namespace FileReaders
