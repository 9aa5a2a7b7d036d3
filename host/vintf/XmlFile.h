// SPDX-License-Identifier: Apache-2.0
// An XML file, parsed as the library parses its map, in which every element knows its line.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <libxml/tree.h>

namespace orvo {

struct DocumentFreer {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

/** Something that is wrong with a file. */
struct XmlMistake {
    const char* code;  ///< Names the kind of mistake for programs, such as "not-xml".
    long line;         ///< 0 if it concerns the file as a whole.
    std::string message;
};

/** What became of a file. */
struct XmlFile {
    std::unique_ptr<xmlDoc, DocumentFreer> document;  ///< Null if there is a mistake.
    XmlMistake mistake;
    std::optional<long> nulLine;  ///< Where a NUL byte ends the document before the file ends.

    /** Reads a regular file. Prints nothing; waits for nothing. */
    static XmlFile read(const std::string& path);
    /** The same with the bytes of one. */
    static XmlFile parse(const std::string& bytes);
};

/**
 * The line on which the start tag of an element of an XmlFile ends, text other than blanks begins,
 * or an entity is referred to. Beyond line 65,535 an element has the line of the text in or after
 * it.
 */
long lineOf(const xmlNode* node);

std::string nameOf(const xmlNode* node);
/** All text inside the node, verbatim. */
std::string contentOf(const xmlNode* node);
std::optional<std::string> attributeOf(const xmlNode* node, const char* name);
bool isElement(const xmlNode* node, const char* name);

constexpr char kXmlBlanks[] = " \t\r\n";
/** Without blanks and line breaks around it. */
std::string trimmed(const std::string& text);

/**
 * While one exists, libxml2 reports its errors on this thread to it and prints none. At most one at
 * a time.
 */
class XmlErrors {
  public:
    XmlErrors();
    ~XmlErrors();
    XmlErrors(const XmlErrors&) = delete;
    XmlErrors& operator=(const XmlErrors&) = delete;

    /** The first error that makes a document malformed. */
    const std::optional<XmlMistake>& first() const { return mFirst; }

  private:
    static void take(void* errors, xmlError* error);

    std::optional<XmlMistake> mFirst;
};

}  // namespace orvo
