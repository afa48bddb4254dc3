#ifndef JSCONFIG_JSCONFIG_H_
#define JSCONFIG_JSCONFIG_H_

#include <cstdint>
#include <memory>
#include <string>

#define JSCONFIG_EXPORT __attribute__((visibility("default")))

/// JSON documents as trees of tokens: read, looked at, changed in numbers, written.
///
/// This header is what the product relies on; another implementation may take the place of ours if
/// it keeps what is said here.
///
/// `CObject` and `CObjectArray` are handles on a token of a document: they are copied as cheaply as
/// a pointer, all copies show and change the same token, and they are valid until the document is
/// destroyed or reads another text. So is every reference that `operator[]` gives; it stays with
/// its token, and assigning to it changes neither the reference nor the document.
///
/// Threads: different documents are independent of each other. One document with its handles
/// belongs to one thread at a time, also for reading, since looking for an absent member makes its
/// token.
namespace jsconfig {

class CObject;
struct Node;
struct Tree;

/// The elements of an array token, in the order of the text.
class JSCONFIG_EXPORT CObjectArray {
 public:
  /// A handle on no array, which has no elements.
  CObjectArray();
  CObjectArray(const CObjectArray& other);
  CObjectArray& operator=(const CObjectArray& other);
  // NOLINTNEXTLINE(performance-trivially-destructible): another implementation may have work here
  ~CObjectArray();

  /// Number of elements; 0 for a handle on a token that is no array. Costs the same for any size.
  int countObject() const;

  /// The element at `index`, counted from 0, at the same cost for any size. An index outside the
  /// array gives an object of class 2, on which `setValue` does nothing.
  CObject& operator[](int index);
  const CObject& operator[](int index) const;

 private:
  friend class CObject;
  friend struct Node;

  explicit CObjectArray(Node* node) noexcept : node_(node) {}

  Node* node_;  // never null
};

/// A handle on one token of a document.
class JSCONFIG_EXPORT CObject {
 public:
  /// A handle on no token: its class is 2, and `setValue` does nothing.
  CObject();
  CObject(const CObject& other);
  CObject& operator=(const CObject& other);
  ~CObject();

  /// The class of the token. Users keep tables of these numbers.
  /// @return 0 null, 1 boolean, 2 absent member or no token, 3 integer from 0 on, 4 negative
  ///         integer, 5 number with a fraction or an exponent, 6 string, 7 array, 8 object
  int getType() const;

  /// The member called `name`; of several with that name the last. A member that is absent has
  /// class 2 until `setValue` is called on it or a copy of it. On a token that is no object, or for
  /// a null `name`, the result has class 2 and `setValue` does nothing on it. Takes time in
  /// proportion to the number of members; a name that holds a zero byte is not found.
  CObject& operator[](const char* name);
  const CObject& operator[](const char* name) const;

  /// The array element at `index`, as `CObjectArray::operator[]` gives it; an object of class 2 if
  /// the token is no array.
  const CObject& operator[](int index) const;

  /// The token as an array, which is empty if it is none. The first form gives a handle, the second
  /// a reference that is valid as long as this object is.
  /// @param ok  may be null; set to whether the token is an array
  CObjectArray toArray(bool* ok);
  const CObjectArray& toArray(bool* ok) const;

  /// The token's value as a boolean or a number. A conversion never fails: what does not fit is
  /// made to fit, and a token of class 0, 2, 6, 7 or 8 gives false or zero.
  ///
  /// | token | toBool | to an integer | toDouble |
  /// |---|---|---|---|
  /// | boolean | its value | 0 or 1 | 0 or 1 |
  /// | integer | whether it is not zero | its low bits | the nearest double |
  /// | other number | whether it is not zero | cut toward zero, held to the range | its value |
  ///
  /// @param ok  may be null; set to whether the token is a boolean (`toBool`), an integer
  ///            (`toInt32` to `toUInt64`) or any number (`toDouble`)
  bool toBool(bool* ok) const;
  std::int32_t toInt32(bool* ok) const;
  std::uint32_t toUInt32(bool* ok) const;
  std::int64_t toInt64(bool* ok) const;
  std::uint64_t toUInt64(bool* ok) const;
  double toDouble(bool* ok) const;

  /// The token as a text: the decoded text of a string, the JSON text of a number or a boolean, as
  /// `save` would write it, and an empty text for every other token.
  /// @param ok  may be null; set to whether the token is a string
  std::string toString(bool* ok) const;

  /// Makes the token the number `value`, of class 3, whatever it was. A member that was absent
  /// is in the object from then on, behind the members that were read; several such members stand
  /// in the order in which they were first looked for. On a handle on no token nothing happens.
  void setValue(unsigned int value);

 private:
  friend struct Node;

  explicit CObject(Node* node) noexcept : handle_(node) {}

  CObjectArray handle_;
};

/// A JSON document: owner of its tokens.
///
/// Read is what RFC 8259 allows, in UTF-8, with these limits: integers (numbers without fraction
/// and exponent) fit 64 bits, other numbers fit a double, arrays and objects nest at most 1,000
/// deep, and the text is shorter than 4 GiB. A byte-order mark, comments and anything behind the
/// document are refused; a name may occur twice in an object. Beyond the standard, bytes inside a
/// string that are not valid UTF-8 are accepted and kept as they are.
///
/// Reading, writing and freeing use little of the stack, whatever the document.
class JSCONFIG_EXPORT CObjectDocument {
 public:
  /// An empty document.
  CObjectDocument();
  ~CObjectDocument();
  CObjectDocument(const CObjectDocument&) = delete;
  CObjectDocument& operator=(const CObjectDocument&) = delete;

  /// Replaces the document by the one in the file at `path`, or in `text`. All earlier handles
  /// become invalid, also on failure, which leaves the document empty.
  /// @return true on success; false when the file cannot be read or the text is refused,
  ///         and `errorString` says why
  /// @throws std::bad_alloc
  bool parse(std::string path);
  bool parseString(const std::string& text);

  /// The outermost token; null in an empty document. It is valid as long as every other handle.
  CObject* root();

  /// What was wrong in the last call of `parse`, `parseString` or `save`, in words; empty
  /// if nothing was.
  std::string errorString();

  /// Writes the document as JSON text without blanks to the file at `path`, which is created or
  /// overwritten in place. Members stand in their order, equal names included; integers and texts
  /// as they were read (-0 as 0), bytes that are not valid UTF-8 too; other numbers in the shortest
  /// form that reads back as the same number of class 5. Absent members are not written.
  /// @return true on success; false for an empty document or when the file cannot be written whole
  bool save(std::string path);

 private:
  std::unique_ptr<Tree> tree_;  // null in an empty document
  std::string error_;
};

}  // namespace jsconfig

#endif  // JSCONFIG_JSCONFIG_H_
