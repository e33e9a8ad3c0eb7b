#pragma once

#include "apps/ifc/IfcModel.h"
#include "apps/ifc/IfcProgressCallback.h"

#include <string>

namespace Kelvor {

// Reads IFC files in STEP form (IFC2x3 and IFC4) into an IfcModel. Every
// failure comes back as false with a message for the user; nothing throws.
// The file is read into memory here and parsed from there, because IFC++'s
// own file loader changes the process locale.
class IfcModelReader
{
public:
    IfcModelReader();
    ~IfcModelReader();

    void setProgressCallback(IfcProgressCallback callback) { mProgress = std::move(callback); }

    // On failure `model` is cleared and getError() says why: missing or
    // unreadable file, not an IFC file, unsupported schema, truncated file,
    // or nothing readable in it.
    bool read(std::string const& path, IfcModel& model);
    // The same for the content of a file; `content` is consumed.
    bool readContent(std::string content, IfcModel& model);

    std::string const& getError() const { return mError; }
    // Messages IFC++ reported as warnings or errors while parsing a file it
    // could still read (unknown entities, bad attributes).
    unsigned int getNumWarning() const { return mNumWarning; }
    // Entity instances the file declares that the parser left out, and the
    // first reason IFC++ gave for anything it could not read.
    unsigned int getNumSkipped() const { return mNumSkipped; }
    // Entities IFC++ reported as damaged: skipped or read in part.
    unsigned int getNumDamaged() const { return mNumDamaged; }
    unsigned int getNumDeclared() const { return mNumDeclared; }
    std::string const& getFirstProblem() const { return mFirstProblem; }

    // Checks the frame of a STEP file without parsing entities: the
    // ISO-10303-21 header, an IFC schema this reader supports, a DATA section
    // and the closing END-ISO-10303-21. Returns the upper-case schema name,
    // or false with the reason.
    static bool checkFrame(std::string const& content, std::string& schema, std::string& error);

private:
    void report(double fraction, char const* phase);
    bool fail(std::string message, IfcModel& model);

    IfcProgressCallback mProgress;
    std::string mError;
    unsigned int mNumWarning = 0;
    unsigned int mNumSkipped = 0;
    unsigned int mNumDamaged = 0;
    unsigned int mNumDeclared = 0;
    std::string mFirstProblem;
};

} // namespace Kelvor
