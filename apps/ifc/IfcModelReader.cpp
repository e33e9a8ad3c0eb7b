#include "apps/ifc/IfcModelReader.h"

#include "apps/ifc/IfcDataSection.h"
#include "apps/ifc/IfcMessageSink.h"
#include "apps/ifc/IfcUtf8.h"

#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/StatusCallback.h>
#include <ifcpp/reader/ReaderSTEP.h>

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace Kelvor {

namespace {

// The share of the whole read that loading the bytes takes; parsing is the rest.
constexpr double kLoadShare = 0.1;

char const* const kStepMagic = "ISO-10303-21;";
char const* const kStepEnd = "END-ISO-10303-21;";
char const* const kUnsupportedVersion = "Unsupported IFC version";

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

} // namespace

IfcModelReader::IfcModelReader() = default;
IfcModelReader::~IfcModelReader() = default;

void IfcModelReader::report(double fraction, char const* phase)
{
    if (mProgress)
        mProgress(fraction, phase);
}

bool IfcModelReader::fail(std::string message, IfcModel& model)
{
    mError = std::move(message);
    model.clear();
    return false;
}

bool IfcModelReader::checkFrame(std::string const& content, std::string& schema, std::string& error)
{
    std::size_t start = 0;
    if (content.compare(0, 3, "\xEF\xBB\xBF") == 0)
        start = 3;
    while (start < content.size() && std::isspace(static_cast<unsigned char>(content[start])))
        ++start;
    if (content.compare(start, std::strlen(kStepMagic), kStepMagic) != 0) {
        error = "not an IFC file: it does not start with ISO-10303-21";
        return false;
    }

    std::size_t const schemaAt = content.find("FILE_SCHEMA", start);
    std::size_t const dataAt = content.find("DATA;", start);
    if (schemaAt == std::string::npos || (dataAt != std::string::npos && schemaAt > dataAt)) {
        error = dataAt == std::string::npos ? "truncated IFC file: the header is incomplete"
                                            : "not an IFC file: the header names no FILE_SCHEMA";
        return false;
    }
    std::size_t const open = content.find('\'', schemaAt);
    std::size_t const close = open == std::string::npos ? open : content.find('\'', open + 1);
    if (close == std::string::npos) {
        error = "truncated IFC file: the header is incomplete";
        return false;
    }
    schema = upper(content.substr(open + 1, close - open - 1));
    if (schema.compare(0, 3, "IFC") != 0) {
        error = "not an IFC file: its schema is '" + schema + "'";
        return false;
    }
    if (schema.compare(0, 6, "IFC2X3") != 0 && schema.compare(0, 4, "IFC4") != 0) {
        error = "unsupported IFC schema '" + schema + "' (IFC2X3 and IFC4 are read)";
        return false;
    }

    if (dataAt == std::string::npos) {
        error = "truncated IFC file: it has no DATA section";
        return false;
    }
    std::size_t const endAt = content.rfind(kStepEnd);
    if (endAt == std::string::npos || endAt < dataAt) {
        error = "truncated IFC file: it ends before END-ISO-10303-21";
        return false;
    }
    return true;
}

bool IfcModelReader::read(std::string const& path, IfcModel& model)
{
    mError.clear();
    mNumWarning = 0;
    report(0.0, "Reading file");

    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        int const code = errno;
        if (code == ENOENT || code == ENOTDIR)
            return fail("file not found: " + path, model);
        return fail("cannot read " + path + ": " + std::strerror(code), model);
    }
    if (!S_ISREG(info.st_mode))
        return fail("cannot read " + path + ": not a regular file", model);

    std::ifstream in(path, std::ios::binary);
    if (!in) {
        int const code = errno;
        return fail("cannot read " + path + ": " + std::strerror(code ? code : EACCES), model);
    }
    std::string content;
    try {
        std::ostringstream buffer;
        buffer << in.rdbuf();
        if (in.bad())
            return fail("cannot read " + path + ": read error", model);
        content = buffer.str();
    } catch (std::exception const& e) {
        return fail("cannot read " + path + ": " + e.what(), model);
    }
    if (content.empty())
        return fail("not an IFC file: " + path + " is empty", model);
    report(kLoadShare, "Reading file");

    if (!readContent(std::move(content), model)) {
        mError = path + ": " + mError;
        return false;
    }
    return true;
}

bool IfcModelReader::readContent(std::string content, IfcModel& model)
{
    mError.clear();
    mNumWarning = 0;
    mNumSkipped = 0;
    mNumDamaged = 0;
    mNumDeclared = 0;
    mFirstProblem.clear();

    std::string schema;
    std::string error;
    if (!checkFrame(content, schema, error))
        return fail(error, model);

    mNumDeclared = static_cast<unsigned int>(IfcDataSection::countInstances(content));
    IfcMessageSink sink;
    sink.phase = "Parsing";
    sink.progress = &mProgress;
    sink.base = kLoadShare;
    sink.share = 1.0 - kLoadShare;
    try {
        shared_ptr<BuildingModel> parsed = std::make_shared<BuildingModel>();
        shared_ptr<ReaderSTEP> reader = std::make_shared<ReaderSTEP>();
        reader->setMessageCallBack(&sink, &IfcMessageSink::receive);
        parsed->setMessageCallBack(&sink, &IfcMessageSink::receive);
        reader->loadModelFromString(content, parsed);
        reader->unsetMessageCallBack();
        parsed->unsetMessageCallBack();
        mNumWarning = sink.warnings;
        mFirstProblem = sink.firstError;
        std::size_t const parsedCount = parsed->getMapIfcEntities().size();
        if (parsedCount == 0) {
            // IFC++ refuses versions it does not know without naming them
            // (and a header it cannot read in the same words).
            bool const knownSchema = schema == "IFC2X3" || schema == "IFC4";
            if (!knownSchema && sink.firstError.find(kUnsupportedVersion) != std::string::npos)
                return fail("unsupported IFC schema '" + schema + "' (IFC2X3 and IFC4 are read)", model);
            std::string reason = "no IFC entities could be read";
            if (!sink.firstError.empty())
                reason += " (" + sink.firstError + ")";
            return fail(reason, model);
        }
        mNumDamaged = sink.damagedEntities;
        if (parsedCount < mNumDeclared)
            mNumSkipped = mNumDeclared - static_cast<unsigned int>(parsedCount);
        model.reset(std::move(parsed), std::move(schema));
    } catch (std::exception const& e) {
        return fail(std::string("IFC parse error: ") + e.what(), model);
    } catch (...) {
        return fail("IFC parse error", model);
    }
    report(1.0, "Parsing");
    return true;
}

} // namespace Kelvor
