// A plug-in that keeps clang-tidy's checks out of system headers, where clang-tidy never shows a finding.
// Version 14 matches every check with every declaration that a source includes, which takes most of its time.
// The compiler's warnings and the static analyzer see the whole source as before. scope-option builds the
// plug-in, and check-tidy tests it.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/AST/DeclCXX.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/FrontendAction.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

namespace {

bool isOwn(const clang::SourceManager& sources, const clang::Decl& declaration) {
    // extern "C" around an include stands in a file of ours, but all that it holds is the system's.
    const auto* block = llvm::dyn_cast<clang::LinkageSpecDecl>(&declaration);
    if (block != nullptr && block->hasBraces()) {
        return std::any_of(block->decls_begin(), block->decls_end(),
                           [&](const clang::Decl* inner) { return isOwn(sources, *inner); });
    }
    return !sources.isInSystemHeader(sources.getExpansionLoc(declaration.getLocation()));
}

class OwnDeclarations final : public clang::ASTConsumer {
  public:
    void HandleTranslationUnit(clang::ASTContext& context) override {
        std::vector<clang::Decl*> own;
        for (clang::Decl* declaration : context.getTranslationUnitDecl()->decls()) {
            if (isOwn(context.getSourceManager(), *declaration)) {
                own.push_back(declaration);
            }
        }
        context.setTraversalScope(own);
    }
};

class KeepToOwnDeclarations final : public clang::PluginASTAction {
  protected:
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance& /*compiler*/,
                                                          llvm::StringRef /*file*/) override {
        return std::make_unique<OwnDeclarations>();
    }
    bool ParseArgs(const clang::CompilerInstance& /*compiler*/,
                   const std::vector<std::string>& /*arguments*/) override {
        return true;
    }
    // The main action is clang-tidy's, which matches the checks.
    ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<KeepToOwnDeclarations> kRegistration("own-declarations",
                                                                              "leaves system headers out");

}  // namespace
