#include "sgn_displace/route.h"

#include <gtest/gtest.h>

#include "flib/io/stop_run.h"

namespace {

using namespace sgn_displace;

std::string text_of(const std::vector<keyword>& keywords) {
    std::string text;
    for (const keyword& each : keywords) {
        text += (text.empty() ? "" : " ") + each.name;
        if (!each.options.empty()) text += "(" + text_of(each.options) + ")";
    }
    return text;
}

std::string parsed(const std::string& route) {
    try {
        return text_of(parse_route(route));
    } catch (const flib::run_error& error) {
        return error.what();
    }
}

TEST(Route, HasKeywordsWithOptions) {
    const struct {
        std::string route;
        std::string keywords;
    } cases[] = {
        {"CIS(NStates=4,Root=1)/6-31+G(d,p) NoSymm", "cis(nstates(4) root(1)) 6-31+g(d p) nosymm"},
        {" td=nstates=4 , force\t5d ", "td(nstates(4)) force 5d"},
        {"td = ( nstates = 4 root=2 ) scf (tight)", "td(nstates(4) root(2)) scf(tight)"},
        {"oniom(td=(root=1)b3lyp/6-31g(d):uff)=embed",
         "oniom(td(root(1)) b3lyp 6-31g(d) uff embed)"},
        {"iop(9/40=3,5/33=1) guess=mix/sp", "iop(9 40(3) 5 33(1)) guess(mix) sp"},
        {"force= nosymm", "force(nosymm)"},
        {"", ""},
        {"td force=", "nothing follows the '=' of 'force' in the route"},
        {"td(root = ) nosymm", "nothing follows the '=' of 'root' in the route"},
        {"td force= ,nosymm", "nothing follows the '=' of 'force' in the route"},
        {"td(", "the parentheses of the route do not match"},
        {"td)", "the parentheses of the route do not match"},
        {"td=(root=1", "the parentheses of the route do not match"},
        {std::string(100000, '('), "the parentheses of the route do not match"},
    };
    for (const auto& [route, keywords] : cases) EXPECT_EQ(parsed(route), keywords) << route;
}

/// The kind of a job, or the reason why there is none.
std::string judged(const std::string& route) {
    try {
        const job_kind kind = judge_route(parse_route(route));
        std::string text = "root " + std::to_string(kind.root);
        if (kind.unit == length_unit::bohr) text += " bohr";
        if (kind.oniom) text += " oniom";
        if (kind.nosymm) text += " nosymm";
        if (kind.force) text += " force";
        if (kind.reads_checkpoint) text += " reads";
        return text;
    } catch (const flib::run_error& error) {
        return error.what();
    }
}

TEST(Route, IsOfAnExcitedState) {
    const struct {
        const char* route;
        const char* kind;
    } cases[] = {
        {"cis/6-31g(d)", "root 1"},
        {"rcis=root=3 forces", "root 3 force"},
        {"TDA(NStates=5,Root=2) b3lyp 6-31g nosymmetry", "root 2 nosymm"},
        {"td ub3lyp", "'ub3lyp' in the route is not of a closed shell"},
        {"td/ROHF", "'rohf' in the route is not of a closed shell"},
        {"oniom(td ucam-b3lyp/gen:uff)", "'ucam-b3lyp' in the route is not of a closed shell"},
        {"oniom(td b3lyp/6-31g(d):uff) symm=none force=nostep", "root 1 oniom nosymm force"},
        {"td b3lyp/ugbs units=(au,rad)", "root 1 bohr"},
        {"td hf units(bohr)", "root 1 bohr"},
        {"td hf units=(ang,deg)", "root 1"},
        {"td hf units=furlong", "'furlong' in the route is no unit known here"},
        {"td guess=read", "root 1 reads"},
        {"td=read hf", "root 1 reads"},
        {"tda hf chkbasis", "root 1 reads"},
        {"td hf density=checkpoint", "root 1 reads"},
        {"td hf scrf=(read,solvent=water) field=x+10 guess=mix", "root 1 reads"},
        {"b3lyp/6-31g(d) force", "the route asks for no excited state"},
        {"eomccsd/6-31g(d)", "the route asks for no excited state"},
        {"zindo tdx cisd", "the route asks for no excited state"},
        {"iop(td=1) hf", "root 1"},
        {"cis(d)/6-31g", "'cis' in the route with the option d gives no forces"},
        {"td(triplets)", "'triplets' in the route asks for triplets"},
        {"td=(50-50,root=1)", "'50-50' in the route asks for triplets"},
        {"td=restart", "'restart' in the route goes on"},
        {"td(root=0)", "'root' in the route needs a number, 1 or above"},
        {"td(root)", "'root' in the route needs a number, 1 or above"},
        {"td(root=(1,2))", "'root' in the route needs a number, 1 or above"},
        {"td(root=one)", "'root' in the route needs a number, 1 or above"},
        {"td opt", "'opt' in the route moves the geometry"},
        {"td Opt=(ts,calcfc)", "'opt' in the route moves the geometry"},
        {"td popt", "'popt' in the route moves"},
        {"td fopt", "'fopt' in the route moves"},
        {"td freq=numer", "'freq' in the route displaces the geometry itself"},
        {"td irc", "'irc' in the route follows a path"},
        {"td scan", "'scan' in the route goes through"},
        {"td admp", "'admp' in the route is a trajectory"},
        {"td bomd", "'bomd' in the route is a trajectory"},
        {"td polar", "'polar' in the route is a job of another type"},
        {"td stable=opt", "'stable' in the route is a job of another type"},
        {"td volume", "'volume' in the route is a job of another type"},
        {"td counterpoise=2", "'counterpoise' in the route makes several"},
        {"td restart", "'restart' in the route goes on with an earlier job"},
        {"nonstd td", "'nonstd' in the route is a route by overlays"},
        {"td sp", "'sp' in the route asks for no forces"},
        {"td geom=check", "'check' in the route takes the geometry from elsewhere"},
        {"td geom=(connectivity,allcheck)", "'allcheck' in the route takes the geometry"},
        {"td geom(modify)", "'modify' in the route takes the geometry"},
        {"td geom(connectivity,printinputorient,nodistance)", "root 1"},
        {"td symmetry=loose", "'symmetry' in the route contradicts nosymm"},
        {"td symm", "'symm' in the route contradicts nosymm"},
        {"td symm(none,loose)", "'symm' in the route contradicts nosymm"},
        {"td(nstates=3,conver=6) scf(conver=9) freqs", "'freqs' in the route displaces"},
        {"td int(opt) scf(restart)", "root 1"},
    };
    for (const auto& [route, kind] : cases) {
        const std::string found = judged(route);
        const bool whole = std::string_view(kind).starts_with("root");
        EXPECT_EQ(whole ? found : found.substr(0, std::string_view(kind).size()), kind) << route;
    }
}

}  // namespace
