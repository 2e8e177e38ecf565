#include <vantu/LoadResult.h>

namespace vantu {

const char* TextOf(LoadResult result) {
    switch (result) {
        case LoadResult::Loaded: return "the picture was loaded";
        case LoadResult::NoFile: return "the file cannot be opened";
        case LoadResult::NotThisKind: return "it is not a file of this kind";
        case LoadResult::Damaged: return "the file is damaged";
        case LoadResult::NotRead: return "it is of a kind that is not read";
        case LoadResult::NoImage: return "there is no image for the picture";
        case LoadResult::NoMemory: return "there is not enough memory to decode it";
    }
    return "no result of a load";
}

}  // namespace vantu
