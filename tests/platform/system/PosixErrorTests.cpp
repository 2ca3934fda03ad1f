// The sentences that users read about files.

#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/system/PosixError.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"

namespace kestrivane::test {
namespace {

const FileURL photo("/w/photo.jpg");

std::string english(int code, FileOperation operation, const FileURL& url = photo) {
  const EnvironmentGuard locale("LC_ALL", "en_GB.UTF-8");
  return posixError(code, operation, url).localizedDescription();
}

std::string russian(int code, FileOperation operation, const FileURL& url = photo) {
  const EnvironmentGuard locale("LC_ALL", "ru_RU.UTF-8");
  return posixError(code, operation, url).localizedDescription();
}

TEST(PosixError, KeepsTheCode) {
  EXPECT_EQ(posixError(ENOSPC, FileOperation::replace, photo).code(), ENOSPC);
}

TEST(PosixError, SaysWhatHappenedToWhichFileAndWhatHelps) {
  EXPECT_EQ(english(ENOSPC, FileOperation::replace),
            "Could not replace 'photo.jpg': the disk is full. Free some space and try again.");
  EXPECT_EQ(english(EEXIST, FileOperation::move),
            "Could not rename 'photo.jpg': the name is already taken. Rename the other item "
            "first.");
  EXPECT_EQ(english(EACCES, FileOperation::makeTemporaryDirectory, FileURL("/tmp/kestrivane-0")),
            "Could not make the temporary folder 'kestrivane-0': permission denied. Check the "
            "permissions of the file and of its folder.");
}

TEST(PosixError, SpeaksRussianInARussianLocale) {
  EXPECT_EQ(russian(ENOSPC, FileOperation::replace),
            "Не удалось заменить 'photo.jpg': на диске нет места. Освободите место и повторите "
            "попытку.");
}

TEST(PosixError, HasASentenceOfItsOwnForEveryCommonFailureInBothLanguages) {
  for (const int code : {ENOENT, EEXIST, EACCES, EPERM, EROFS, ENOSPC, EDQUOT, EFBIG, EXDEV, EISDIR,
                         ENOTDIR, EOPNOTSUPP, ENAMETOOLONG, ESTALE, EIO}) {
    const std::string inEnglish = english(code, FileOperation::replace);
    const std::string inRussian = russian(code, FileOperation::replace);
    EXPECT_EQ(inEnglish.find("system error"), std::string::npos) << inEnglish;
    EXPECT_EQ(inRussian.find("системная ошибка"), std::string::npos) << inRussian;
    EXPECT_TRUE(inRussian.starts_with("Не удалось заменить 'photo.jpg': ")) << inRussian;
    EXPECT_NE(inEnglish, inRussian);
  }
}

TEST(PosixError, NamesAnyOtherFailureByItsNumber) {
  EXPECT_EQ(english(ENFILE, FileOperation::move),
            "Could not rename 'photo.jpg': system error 23 (Too many open files in system).");
  EXPECT_EQ(russian(ENFILE, FileOperation::move),
            "Не удалось переименовать 'photo.jpg': системная ошибка 23 (Too many open files in "
            "system).");
  EXPECT_EQ(english(9999, FileOperation::move), "Could not rename 'photo.jpg': system error 9999.");
}

TEST(PosixError, ShowsANameThatIsNotUTF8AsValidText) {
  EXPECT_EQ(english(EISDIR, FileOperation::replace, FileURL("/w/\xff.jpg")),
            "Could not replace '\uFFFD.jpg': it is a folder.");
}

}  // namespace
}  // namespace kestrivane::test
