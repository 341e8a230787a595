#include "platform/cups/cups_printers.h"

#include <cups/cups.h>

#include <cstring>
#include <fstream>
#include <span>
#include <string>

#include "frame/errors.h"

namespace qumbrel {

namespace {

constexpr int kConnectTimeoutMs = 5000;
constexpr std::size_t kJobChunk = 64 * 1024;

[[noreturn]] void fail(std::string_view what) {
    std::string text = "CUPS: ";
    text += what;
    if (const char* why = cupsLastErrorString(); why && *why) {
        text += ": ";
        text += why;
    }
    throw VbError(kPrinterError, text, "CUPS");
}

struct HttpClose {
    void operator()(http_t* h) const { httpClose(h); }
};
using Http = std::unique_ptr<http_t, HttpClose>;

struct DestFree {
    void operator()(cups_dest_t* d) const { cupsFreeDests(1, d); }
};
using Dest = std::unique_ptr<cups_dest_t, DestFree>;

struct InfoFree {
    void operator()(cups_dinfo_t* i) const { cupsFreeDestInfo(i); }
};
using DestInfo = std::unique_ptr<cups_dinfo_t, InfoFree>;

// All destinations with their is_default marks, freed on scope exit.
class DestList {
  public:
    explicit DestList(http_t* http) { count_ = cupsGetDests2(http, &dests_); }
    ~DestList() { cupsFreeDests(count_, dests_); }
    DestList(const DestList&) = delete;
    DestList& operator=(const DestList&) = delete;
    std::span<cups_dest_t> all() { return {dests_, static_cast<std::size_t>(count_)}; }
    // nullptr finds the default; "name/instance" an instance.
    cups_dest_t* find(const std::string* full) {
        if (!full) return cupsGetDest(nullptr, nullptr, count_, dests_);
        const auto slash = full->find('/');
        const std::string name = full->substr(0, slash);
        const std::string instance = slash == std::string::npos ? "" : full->substr(slash + 1);
        return cupsGetDest(name.c_str(), instance.empty() ? nullptr : instance.c_str(), count_,
                           dests_);
    }
    void save(http_t* http) {
        if (cupsSetDests2(http, count_, dests_) != 0) fail("cannot write the user's default");
    }

  private:
    cups_dest_t* dests_ = nullptr;
    int count_ = 0;
};

// cupsGetNamedDest reports a missing printer when the scheduler is down: connect first.
Http connect() {
    http_t* h = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                             kConnectTimeoutMs, nullptr);
    if (!h) {
        throw VbError(kPrinterError,
                      std::string("CUPS: the print service at ") + cupsServer() +
                          " is not running or not reachable",
                      "CUPS");
    }
    return Http(h);
}

std::string dest_name(const cups_dest_t& d) {
    std::string name = d.name ? d.name : "";
    if (d.instance) name += std::string("/") + d.instance;
    return name;
}

class CupsJob : public PrintJob {
  public:
    CupsJob(Http http, Dest dest, DestInfo info, int jobId)
        : http_(std::move(http)), dest_(std::move(dest)), info_(std::move(info)), jobId_(jobId) {
        buffer_.reserve(kJobChunk);
    }
    ~CupsJob() override {
        if (!ended_) {
            cupsFinishDestDocument(http_.get(), dest_.get(), info_.get());
            cupsCancelDestJob(http_.get(), dest_.get(), jobId_);
        }
    }

    void print_line(std::string_view line) override {
        buffer_.append(line);
        buffer_.push_back('\n');
        if (buffer_.size() >= kJobChunk) flush();
    }
    // Bytes of the document as they are (a PDF).
    void write(std::string_view bytes) {
        buffer_.append(bytes);
        if (buffer_.size() >= kJobChunk) flush();
    }

    void end() override {
        flush();
        ended_ = true;
        if (cupsFinishDestDocument(http_.get(), dest_.get(), info_.get()) != IPP_STATUS_OK) {
            fail("the job was not accepted");
        }
    }

  private:
    void flush() {
        if (buffer_.empty()) return;
        if (cupsWriteRequestData(http_.get(), buffer_.data(), buffer_.size()) !=
            HTTP_STATUS_CONTINUE) {
            fail("cannot send the job's data");
        }
        buffer_.clear();
    }

    Http http_;
    Dest dest_;
    DestInfo info_;
    int jobId_;
    std::string buffer_;
    bool ended_ = false;
};

class CupsPrinterSystem : public PrinterSystem {
  public:
    std::vector<std::string> printers() override {
        const Http http = connect();
        DestList list(http.get());
        std::vector<std::string> names;
        for (const auto& d : list.all()) names.push_back(dest_name(d));
        return names;
    }

    std::unique_ptr<PrintJob> start_job(const std::string& printer, PageOrientation orientation,
                                        const std::string& title) override {
        return open_job(printer, orientation, title, CUPS_FORMAT_TEXT);
    }

    void print_pdf(const std::string& printer, const std::string& pdfPath,
                   const std::string& title) override {
        std::ifstream in(pdfPath, std::ios::binary);
        if (!in) fail("cannot read " + pdfPath);
        auto job = open_job(printer, PageOrientation::Portrait, title, CUPS_FORMAT_PDF);
        char chunk[kJobChunk];
        while (in.read(chunk, sizeof chunk) || in.gcount() > 0)
            job->write(std::string_view(chunk, static_cast<std::size_t>(in.gcount())));
        job->end();
    }

  private:
    std::unique_ptr<CupsJob> open_job(const std::string& printer, PageOrientation orientation,
                                      const std::string& title, const char* format) {
        Http http = connect();
        const auto slash = printer.find('/');
        const std::string name = printer.substr(0, slash);
        const std::string instance = slash == std::string::npos ? "" : printer.substr(slash + 1);
        Dest dest(cupsGetNamedDest(http.get(), name.c_str(),
                                   instance.empty() ? nullptr : instance.c_str()));
        if (!dest) fail("no printer " + printer);
        DestInfo info(cupsCopyDestInfo(http.get(), dest.get()));
        if (!info) fail("cannot read the capabilities of " + printer);

        cups_option_t* options = nullptr;
        int count =
            cupsAddOption(CUPS_ORIENTATION,
                          orientation == PageOrientation::Landscape ? CUPS_ORIENTATION_LANDSCAPE
                                                                    : CUPS_ORIENTATION_PORTRAIT,
                          0, &options);
        int jobId = 0;
        const ipp_status_t created = cupsCreateDestJob(http.get(), dest.get(), info.get(), &jobId,
                                                       title.c_str(), count, options);
        cupsFreeOptions(count, options);
        if (created > IPP_STATUS_OK_CONFLICTING) fail("cannot create a job on " + printer);
        if (cupsStartDestDocument(http.get(), dest.get(), info.get(), jobId, title.c_str(), format,
                                  0, nullptr, 1) != HTTP_STATUS_CONTINUE) {
            cupsCancelDestJob(http.get(), dest.get(), jobId);
            fail("cannot start the document on " + printer);
        }
        return std::make_unique<CupsJob>(std::move(http), std::move(dest), std::move(info), jobId);
    }

  public:
    DefaultPrinter default_printer() override {
        const Http http = connect();
        DefaultPrinter result;
        DestList list(http.get());
        if (const cups_dest_t* d = list.find(nullptr)) result.name = dest_name(*d);
        const char* server = cupsGetDefault2(http.get());
        result.userChosen = !result.name.empty() && (!server || result.name != server);
        return result;
    }

    void set_default(const std::string& printer) override {
        const Http http = connect();
        DestList list(http.get());
        cups_dest_t* wanted = list.find(&printer);
        if (!wanted) fail("no printer " + printer);
        for (auto& d : list.all()) d.is_default = 0;
        wanted->is_default = 1;
        list.save(http.get());
    }

    void clear_chosen_default() override {
        const Http http = connect();
        DestList list(http.get());
        for (auto& d : list.all()) d.is_default = 0;
        list.save(http.get());
    }
};

}  // namespace

std::shared_ptr<PrinterSystem> make_cups_printer_system() {
    return std::make_shared<CupsPrinterSystem>();
}

}  // namespace qumbrel
