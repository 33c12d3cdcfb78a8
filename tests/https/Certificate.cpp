#include "https/Certificate.h"

#include <stdexcept>

#include <QProcess>
#include <QStringList>

namespace driftmark::test {

Certificate Certificate::make(const std::string& folder, const std::string& hostName) {
  const Certificate made{.certificateFile = folder + "/certificate.pem",
                         .keyFile = folder + "/key.pem"};
  const QString host = QString::fromStdString(hostName);
  const QStringList arguments{"req",      "-x509",
                              "-newkey",  "ec",
                              "-pkeyopt", "ec_paramgen_curve:prime256v1",
                              "-nodes",   "-days",
                              "30",                                             //
                              "-subj",    "/CN=" + host,                        //
                              "-addext",  "subjectAltName=DNS:" + host,         //
                              "-keyout",  QString::fromStdString(made.keyFile), //
                              "-out",     QString::fromStdString(made.certificateFile)};
  QProcess openssl;
  openssl.start("openssl", arguments);
  if (!openssl.waitForFinished() || openssl.exitCode() != 0)
    throw std::runtime_error("openssl: " + openssl.errorString().toStdString() + ": " +
                             openssl.readAllStandardError().toStdString());
  return made;
}

} // namespace driftmark::test
