#ifndef ZOLT41_BENCH_QT_STORES_H_
#define ZOLT41_BENCH_QT_STORES_H_

#include <KConfig>
#include <KConfigGroup>
#include <QSettings>
#include <QString>
#include <string>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"

namespace zolt::bench {

// The peers of Qt keep the whole file in memory and write it anew at each sync.

// Brings a text into the buffer as the other stores do, in bytes.
inline void CopyOut(QString const &text, char *buffer) {
  QChar const *const from = text.constData();
  for (int i = 0; i <= text.size(); i++) buffer[i] = static_cast<char>(from[i].unicode());
}

class KConfigStore {
 public:
  KConfigStore()
      : names_(Names(kValues)),
        file_(QString::fromStdString(WorkFile("peer.kconfig")), KConfig::SimpleConfig),
        group_(&file_, kSectionName) {}

  void Fill() {
    for (size_t i = 0; i < names_.size(); i++) Set(i);
    Require(file_.sync(), "KConfig did not write its file");
  }
  void Read(size_t index, char *buffer) {
    CopyOut(group_.readEntry(names_[index].c_str(), QString()), buffer);
  }
  void Write(size_t index) {
    Set(index);
    Require(file_.sync(), "KConfig did not write its file");
  }

  std::vector<std::string> const &names() const { return names_; }

 private:
  void Set(size_t index) {
    std::string const &name = names_[index];
    group_.writeEntry(name.c_str(), QString::fromLatin1(NextText(name)));
  }

  std::vector<std::string> names_;
  KConfig file_;
  KConfigGroup group_;
};

class QSettingsStore {
 public:
  QSettingsStore()
      : names_(Names(kValues)),
        file_(QString::fromStdString(WorkFile("peer.ini")), QSettings::IniFormat) {
    for (std::string const &name : names_) {
      keys_.push_back(QString::fromLatin1(kSectionName) + '/' + QString::fromStdString(name));
    }
  }

  void Fill() {
    for (size_t i = 0; i < names_.size(); i++) Set(i);
    Sync();
  }
  void Read(size_t index, char *buffer) { CopyOut(file_.value(keys_[index]).toString(), buffer); }
  void Write(size_t index) {
    Set(index);
    Sync();
  }

  std::vector<std::string> const &names() const { return names_; }

 private:
  void Set(size_t index) {
    file_.setValue(keys_[index], QString::fromLatin1(NextText(names_[index])));
  }
  void Sync() {
    file_.sync();
    Require(file_.status() == QSettings::NoError, "QSettings did not write its file");
  }

  std::vector<std::string> names_;
  std::vector<QString> keys_;
  QSettings file_;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_QT_STORES_H_
