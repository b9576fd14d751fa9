#include "shell/droits.h"

namespace control {
namespace {

class ElementFixe : public ElementDroits {
public:
    explicit ElementFixe(int niveau) : m_niveau(niveau) {}
    int niveau() const override { return m_niveau; }

private:
    int m_niveau;
};

}  // namespace

std::shared_ptr<ElementDroits> DroitsFixes::element(const std::string&) const {
    return std::make_shared<ElementFixe>(m_niveau);
}

}  // namespace control
