#include "storage/ErrorsOnly.h"

#include "base/Error.h"

#include <new>
#include <system_error>

namespace korvex::storage {

namespace {

constexpr const char* kDomain = "Korvex.System";

} // namespace

void throwAsError() {
    try {
        throw;
    } catch (const base::Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw base::Error(kDomain, 1, "There is not enough memory.");
    } catch (const std::system_error& error) { // of files too
        throw base::Error(kDomain, error.code().value(),
                          "The system refused it: " + error.code().message() + ".");
    } catch (...) {
        throw base::Error(kDomain, 2, "It failed for a reason that is not known. Try again.");
    }
}

} // namespace korvex::storage
