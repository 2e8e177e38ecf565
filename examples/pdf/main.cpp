// pdf FILE.pdf [-p PAGE or FIRST-LAST] [-r DPI] [-o OUT.png] [-j THREADS] [--calls]: paints pages of a PDF file on
// white, one PNG file a page. Of several pages the number stands before the .png. What is left out or replaced is said
// at the end; --calls also prints what the pages asked of the library.

#include <getopt.h>
#include <unistd.h>
#include <vantu/CPNGSaver.h>

#include <charconv>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include "PagePainter.h"

namespace {

constexpr const char* kUsage =
    "usage: pdf FILE.pdf [-p PAGE or FIRST-LAST] [-r DPI] [-o OUT.png] [-j THREADS] [--calls]\n";
constexpr int kMostThreads = 64;
constexpr double kMostDotsPerInch = 10000;

struct Arguments {
    std::string file;
    std::string out;
    int first = 1;
    int last = 0;  // 0 for the last page of the file
    double dotsPerInch = 72;
    int threads = 1;
    bool printsCalls = false;
};

template <typename Value>
Value Parse(std::string_view text, Value least, Value most) {
    Value value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !(value >= least && value <= most))
        throw std::invalid_argument("\"" + std::string(text) + "\" is no number that can stand here");
    return value;
}

void ParsePages(std::string_view text, Arguments& arguments) {
    const std::size_t dash = text.find('-');
    const int most = std::numeric_limits<int>::max();
    arguments.first = Parse(text.substr(0, dash), 1, most);
    arguments.last = dash == std::string_view::npos ? arguments.first : Parse(text.substr(dash + 1), 1, most);
}

// @throws std::invalid_argument
Arguments ParseArguments(int argc, char** argv) {
    Arguments arguments;
    const option calls[] = {{"calls", no_argument, nullptr, 'c'}, {}};
    for (int name = 0; (name = getopt_long(argc, argv, "p:r:o:j:", calls, nullptr)) != -1;) {
        switch (name) {
            case 'c': arguments.printsCalls = true; break;
            case 'p': ParsePages(optarg, arguments); break;
            case 'r': arguments.dotsPerInch = Parse(optarg, 1.0, kMostDotsPerInch); break;
            case 'o': arguments.out = optarg; break;
            case 'j': arguments.threads = Parse(optarg, 1, kMostThreads); break;
            default: throw std::invalid_argument("an option that there is not, or that needs a value");
        }
    }
    if (argc - optind != 1) throw std::invalid_argument("one file has to be named");
    arguments.file = argv[optind];
    return arguments;
}

// The name of a page's picture.
std::string NameOf(const Arguments& arguments, int page, bool isOneOfMany) {
    std::string name = arguments.out;
    if (name.empty()) name = arguments.file.substr(arguments.file.find_last_of('/') + 1) + ".png";
    if (!isOneOfMany) return name;
    const std::string extension = ".png";
    if (name.ends_with(extension)) name.erase(name.size() - extension.size());
    return name + "-" + std::to_string(page) + extension;
}

void PaintPages(const Arguments& arguments) {
    std::vector<std::unique_ptr<pdf::PageContext>> contexts;
    for (int i = 0; i < arguments.threads; ++i) contexts.push_back(std::make_unique<pdf::PageContext>(arguments.file));
    const int count = contexts.front()->document.PageCount();
    const int last = arguments.last == 0 ? count : arguments.last;
    if (arguments.first > last || last > count)
        throw std::runtime_error("the file has pages 1 to " + std::to_string(count));

    const bool isMany = last > arguments.first;
    const bool showsProgress = isMany && isatty(STDERR_FILENO) != 0;
    for (int page = arguments.first; page <= last; ++page) {
        if (showsProgress) std::cerr << "\rpage " << page << " of " << last << std::flush;
        const std::string name = NameOf(arguments, page, isMany);
        const auto image = pdf::PaintPage(contexts, page - 1, arguments.dotsPerInch);
        if (!vantu::CPNGSaver().Save(*image, name)) throw std::runtime_error("cannot write " + name);
    }
    if (showsProgress) std::cerr << '\n';

    // Each band meets the same content, but for what it need not look into.
    std::map<std::string, unsigned long> notes;
    for (const auto& context : contexts) {
        for (const auto& [text, times] : context->notes.Counts()) notes[text] = std::max(notes[text], times);
    }
    for (const auto& [text, times] : notes)
        std::cerr << text << (times > 1 ? " (" + std::to_string(times) + " times)" : "") << '\n';
    if (!arguments.printsCalls) return;
    for (std::size_t i = 0; i < contexts.size(); ++i) {
        if (contexts.size() > 1) std::cout << "thread " << i + 1 << '\n';
        contexts[i]->calls.Print(std::cout);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        PaintPages(ParseArguments(argc, argv));
        return EXIT_SUCCESS;
    } catch (const std::invalid_argument& error) {
        std::cerr << "pdf: " << error.what() << '\n' << kUsage;
    } catch (const std::exception& error) {
        std::cerr << "pdf: " << error.what() << '\n';
    }
    return EXIT_FAILURE;
}
