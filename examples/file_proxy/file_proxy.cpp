// Keeps the log book of a vehicle in a file proxy: stores, lists, appends, corrects, reads back and
// deletes files, and tells after each step what came out of it.
//
// usage: file_proxy <directory>
//
// The directory must exist and be empty. A step that comes out otherwise than expected ends in 1.

#include <algorithm>
#include <array>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ara/per/persistency.h"
#include "crc/crc.h"

namespace {

using ara::per::BasicOperations;
using ara::per::FileProxyAccessorFactory;
using ara::per::WriteAccessor;
using OpenMode = BasicOperations::OpenMode;

constexpr char kTrips[] = "trips.txt";
constexpr char kNotes[] = "notes.txt";
constexpr unsigned long kTrip = 14;  // bytes of a trip

std::string StateOf(const BasicOperations& accessor) {
  const std::array<std::pair<bool, const char*>, 6> queries = {{
      {accessor.good(), "good"},
      {accessor.eof(), "end met"},
      {accessor.fail(), "failed"},
      {accessor.bad(), "broken"},
      {!accessor, "unusable"},
      {static_cast<bool>(accessor), "usable"},
  }};
  std::string words;
  for (const auto& [isSo, word] : queries) {
    if (isSo) {
      words += (words.empty() ? "" : ", ") + std::string(word);
    }
  }
  return words;
}

/// @return `result`, and where and in which state it has left the accessor
std::string Outcome(BasicOperations& accessor, const std::string& result) {
  const auto position = std::to_string(static_cast<long>(accessor.tell()));
  return result + "; at " + position + ": " + StateOf(accessor);
}

std::string Bytes(long count) { return std::to_string(count) + " bytes"; }

/// A text with its line ends as '|'.
std::string Quoted(std::string text) {
  std::replace(text.begin(), text.end(), '\n', '|');
  return '"' + text + '"';
}

std::string KeysOf(const FileProxyAccessorFactory& files) {
  std::vector<std::string> keys = files.GetAllKeys();
  std::sort(keys.begin(), keys.end());  // a directory has no order
  std::string text;
  for (const std::string& key : keys) {
    text += (text.empty() ? "" : " ") + key;
  }
  return text.empty() ? "none" : text;
}

/// Prints a line for each step and counts the differences.
class Report {
 public:
  void step(const std::string& name, const std::string& found, const std::string& expected) {
    std::cout << std::left << std::setw(36) << name << ' ' << found;
    if (found != expected) {
      ++differences_;
      std::cout << "  DIFFERENT, expected " << expected;
    }
    std::cout << '\n';
  }

  /// @return whether all steps came out as expected
  bool finish() const {
    std::cout << differences_ << " steps came out otherwise than expected.\n";
    return differences_ == 0;
  }

 private:
  int differences_ = 0;
};

WriteAccessor& Flushed(WriteAccessor& accessor) {
  accessor.flush();
  return accessor;
}

void Store(FileProxyAccessorFactory& files, Report& report) {
  report.step("list the keys", KeysOf(files), "none");
  const auto trips = files.CreateWriteAccess(kTrips, OpenMode::out);
  report.step("create the trips", Outcome(*trips, "new"), "new; at 0: good, usable");
  report.step("write a trip", Outcome(*trips, Bytes(trips->write("21 Nov  41 km\n", kTrip))),
              "14 bytes; at 14: good, usable");
  report.step("write a second trip", Outcome(*trips, Bytes(trips->write("22 Nov 112 km\n", kTrip))),
              "14 bytes; at 28: good, usable");
  trips->fsync();  // the end of an accessor does not bring the data to the disk
  report.step("synchronise", Outcome(*trips, "done"), "done; at 28: good, usable");

  const auto notes = files.CreateWriteAccess(kNotes, OpenMode::out);
  *notes << "winter tyres\n" << Flushed;
  const auto readNotes = files.CreateReadAccess(kNotes, OpenMode::in);
  report.step("write a note as a text", Outcome(*notes, Bytes(readNotes->fileSize())),
              "13 bytes; at 13: good, usable");
  report.step("list the keys", KeysOf(files), "notes.txt trips.txt");
}

void Append(FileProxyAccessorFactory& files, Report& report) {
  const auto trips = files.CreateWriteAccess(kTrips, OpenMode::app);
  report.step("open the trips to append", Outcome(*trips, "open"), "open; at 28: good, usable");
  report.step("append a trip", Outcome(*trips, Bytes(trips->write("23 Nov   7 km\n", kTrip))),
              "14 bytes; at 42: good, usable");
  trips->fsync();
}

void Correct(FileProxyAccessorFactory& files, Report& report) {
  const auto trips = files.CreateRWAccess(kTrips, OpenMode::in | OpenMode::out);
  report.step("open the trips to correct", Outcome(*trips, Bytes(trips->fileSize())),
              "42 bytes; at 0: good, usable");
  trips->seek(kTrip);
  report.step("overwrite the second trip",
              Outcome(*trips, Bytes(trips->write("22 Nov 121 km\n", kTrip))),
              "14 bytes; at 28: good, usable");
  trips->fsync();

  std::string trip(kTrip, '\0');
  trips->seek(-static_cast<long>(2 * kTrip), BasicOperations::SeekDirection::end);
  report.step("go back by two trips", Outcome(*trips, "done"), "done; at 14: good, usable");
  trips->read(trip.data(), trip.length());
  report.step("read the second trip", Outcome(*trips, Quoted(trip)),
              "\"22 Nov 121 km|\"; at 28: good, usable");
}

void ReadBack(FileProxyAccessorFactory& files, Report& report) {
  const auto trips = files.CreateReadAccess(kTrips, OpenMode::in);
  std::string all(100, '\0');
  const long count = trips->read(all.data(), all.length());
  all.resize(static_cast<std::string::size_type>(std::max(count, 0L)));
  report.step("read 100 bytes", Outcome(*trips, Bytes(count)),
              "42 bytes; at 42: end met, failed, unusable");
  report.step("compare them", Quoted(all), "\"21 Nov  41 km|22 Nov 121 km|23 Nov   7 km|\"");

  trips->clear();
  trips->seek(0);
  report.step("clear, seek to the front", Outcome(*trips, "done"), "done; at 0: good, usable");
  std::string text;
  trips->getline(text, '\n');
  report.step("read a line", Outcome(*trips, Quoted(text)),
              "\"21 Nov  41 km\"; at 14: good, usable");
  *trips >> text;
  report.step("read a word", Outcome(*trips, Quoted(text)), "\"22\"; at 16: good, usable");

  const std::vector<unsigned char> bytes(all.begin(), all.end());
  const unsigned int sum = crc::CRC::CalculateCRC32(crc::BufferView(bytes, bytes.size()), true);
  report.step("checksum of the trips (CRC-32)", std::to_string(sum), "2900816111");
}

void Delete(FileProxyAccessorFactory& files, Report& report) {
  files.DeleteKey(kNotes);
  report.step("delete the note", files.HasKey(kNotes) ? "still there" : "gone", "gone");
  const auto notes = files.CreateReadAccess(kNotes, OpenMode::in);
  report.step("read the note", Outcome(*notes, Bytes(notes->fileSize())),
              "0 bytes; at -1: failed, unusable");
  report.step("list the keys", KeysOf(files), "trips.txt");
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: file_proxy <directory>\n";
    return 2;
  }
  try {
    const auto files = ara::per::CreateFileAccessorFactory(argv[1]);
    Report report;
    for (const auto part : {Store, Append, Correct, ReadBack, Delete}) {
      part(*files, report);
    }
    return report.finish() ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "file_proxy: " << error.what() << '\n';
    return 1;
  }
}
