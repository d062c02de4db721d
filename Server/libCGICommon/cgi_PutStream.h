// CPutStream: the response of a gateway program, to standard output. Conventions: cgi_Helpers.h.
//
// Wide text goes out as UTF-8 (half a surrogate pair as U+FFFD), narrow text and bytes as they are. Nothing is added:
// the program writes the header lines itself, an empty line after them, and names the character set there.
//
//   CPutStream out(false);
//   out << "Content-Type: text/html; charset=utf-8" << endl << endl;
//   out << "<p>";
//   out.Send(name, true);
//
// Output is collected and written when 16 KiB are there, at endl and flush, and when the stream ends. Standard output
// is looked up at every write and gets the bytes untranslated; programs that also print otherwise flush first. When the
// web server has stopped reading, the rest is dropped.
#pragma once

#include "cgi_Helpers.h"

namespace wrb {
class OutputBuffer;
}

// Collects the output of a stream; the manipulators act on it.
class WRB_CGI_API OutputStreamConverter {
  public:
    OutputStreamConverter(const OutputStreamConverter&) = delete;
    OutputStreamConverter& operator=(const OutputStreamConverter&) = delete;

    void EndLine();
    void Flush();

  protected:
    explicit OutputStreamConverter(bool writeThrough);
    ~OutputStreamConverter();

    void PutBytes(const char* bytes, uint32_t count);
    void PutWide(const wchar_t* text, bool escape);

  private:
    bool m_writeThrough;
    wrb::OutputBuffer* m_buffer;  // null when memory was exhausted: all output is dropped
};

WRB_CGI_API OutputStreamConverter& endl(OutputStreamConverter& stream);   // a line feed, and flush
WRB_CGI_API OutputStreamConverter& flush(OutputStreamConverter& stream);  // hands over what has been collected

class WRB_CGI_API CPutStream : public OutputStreamConverter {
  public:
    explicit CPutStream(bool writeThrough);  // true: every single insertion is written at once
    ~CPutStream();
    CPutStream(const CPutStream&) = delete;
    CPutStream& operator=(const CPutStream&) = delete;

    CPutStream& operator<<(int number);
    CPutStream& operator<<(const char* text);
    CPutStream& operator<<(const wchar_t* text);
    CPutStream& operator<<(OutputStreamConverter& (*manipulator)(OutputStreamConverter&));

    // `escape`: & < > " and ' go out as character references, so that the text can stand in an HTML text or attribute.
    void Send(const wchar_t* text, bool escape);
    // A negative count sends nothing.
    void Send(const unsigned char* bytes, int count);
};
