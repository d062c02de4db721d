// CGetParameter: the parameters of the web request that a gateway program serves.
//
// Every object shares one hidden implementation. The first object made reads the request, from the environment
// variables "REQUEST_METHOD", "QUERY_STRING", "CONTENT_TYPE" and "CONTENT_LENGTH" and from standard input, which is
// used up by that; later objects and the destructor do nothing to it. Conventions: cgi_Helpers.h.
//
// A parameter is a name and a value, in request order. A name may come twice; look-ups take the first whose name
// matches, whatever the case. Values come from the client: test that what is needed is there and is what it should be.
//
// Uploads. A file that comes with a "multipart/form-data" request is stored in the folder "Temp" of the server's home
// folder under a random name; its parameter's value is the full path, and a parameter "NAME.filename" follows with what
// the client called the file, cut to its last component: for showing only. A part whose file name is empty and that has
// no byte (no file chosen) is an empty value. A client may as well send a field that merely looks like a path: open
// what GetUploadFile returns and nothing else. The files stay until the program moves or deletes them; those of a
// refused request are gone already.
//
// Texts that are returned belong to the implementation and stay valid until Reset; a text of Dump until the next Dump.
#pragma once

#include "cgi_Helpers.h"

// What GetInitializationResult returns. Codes from 4100 are of "multipart/form-data" requests, which then have no
// parameters and leave no file.
enum CgiStatus : int {
    kCgiFetched = 3900,              // fetched; also a GET without a query, and a form that was too long or cut
    kCgiNoImplementation = 3908,     // out of memory
    kCgiBadMethod = 4000,            // "REQUEST_METHOD" is missing or neither "GET" nor "POST"
    kCgiBadContentType = 4001,       // a POST of another kind than the two forms
    kCgiMultipartNoBoundary = 4100,  // "CONTENT_TYPE" names no boundary, or one longer than 70 characters
    kCgiMultipartNoLength = 4101,    // "CONTENT_LENGTH" is missing, 0 or no number
    kCgiMultipartTooLong = 4102,     // the body is longer than a POST may be
    kCgiMultipartNoMemory = 4103,
    kCgiMultipartCutBody = 4104,  // the input ended before "CONTENT_LENGTH" bytes
    kCgiMultipartNoEnd = 4105,    // no closing boundary
    // A part without a name, or without an empty line after its headers, with headers beyond 16 KiB, or with NUL in
    // its text.
    kCgiMultipartBadPart = 4106,
    kCgiMultipartTooManyParts = 4107,   // more than 1000
    kCgiMultipartFileNotStored = 4108,  // an upload could not be written
};

class CGetParameterImp;

class WRB_CGI_API CGetParameter {
  public:
    CGetParameter();
    // `allowBinaryBlock`: a POSTed form whose last field is a bare "BinaryDataBlock=" may be followed by one separator
    // byte and raw data, which goes into a file as an upload does. Fields end at the first NUL byte, so let the
    // separator be NUL: after "&", CR or LF the data counts only when nothing but these stands before its first NUL,
    // and is taken for fields otherwise. `skipPercentDecoding` is for readers of raw uploads; the parameters of forms
    // and queries are always decoded. Both count for the first object only.
    CGetParameter(bool allowBinaryBlock, bool skipPercentDecoding);
    ~CGetParameter();  // NOLINT(performance-trivially-destructible): exported, so that a later version may need it
    CGetParameter(const CGetParameter&) = delete;
    CGetParameter& operator=(const CGetParameter&) = delete;

    int GetInitializationResult() const;  // a CgiStatus

    // The value as a decimal number, 0 when it begins with none, clamped to 32 bits; the default when there is no such
    // parameter.
    int Get(const wchar_t* name, int defaultValue) const;
    const wchar_t* Get(const wchar_t* name) const;  // empty when there is no such parameter
    const wchar_t* GetValueByName(const wchar_t* name, const wchar_t* defaultText) const;

    // The path of the file that this request has stored for the parameter; empty when its value is anything else.
    const wchar_t* GetUploadFile(const wchar_t* name) const;

    // Steps to the next parameter; false, with both texts null, after the last. `skipEmpty` passes over parameters
    // without a value, such as fields that were left blank.
    bool EnumPara(const wchar_t*& name, const wchar_t*& value, bool skipEmpty);
    void ResetEnumPara();

    int AddParameter(const wchar_t* name, const wchar_t* value);  // 0; kCgiNoImplementation without memory
    void Reset();                                                 // forgets all parameters; files stay

    // All parameters as an HTML table with the columns Name and Value, escaped.
    const char* Dump() const;

    // Deletes a file that an upload left behind, of this request or an earlier one: `name` is its bare name or its full
    // path. Whatever is not the name of an upload in the folder of uploads is refused. True when it was deleted.
    bool DeleteUnwantedUploadFile(const wchar_t* name);

    // Deletes every file that this request has stored and that is still there: for a program that is done with them.
    void DeleteUploadFiles();

  private:
    static CGetParameterImp* s_pImp;
};
